#include "host/cstr.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

CStr::CStr() : buf_(nullptr), length_(0) {}
CStr::CStr(const char* s) : CStr() { *this = s; }
CStr::CStr(const CStr& s) : CStr() { assign(s.buf_, s.length_); }
CStr::CStr(CStr&& s) noexcept : buf_(s.buf_), length_(s.length_) {
    s.buf_ = nullptr;
    s.length_ = 0;
}
CStr::~CStr() { HostFree(buf_); }

CStr& CStr::operator=(const char* s) {
    if (s == buf_ && s)
        return *this;
    assign(s, s ? int(std::strlen(s)) : 0);
    return *this;
}
CStr& CStr::operator=(const CStr& s) {
    if (this != &s)
        assign(s.buf_, s.length_);
    return *this;
}
CStr& CStr::operator=(CStr&& s) noexcept {
    if (this != &s) {
        HostFree(buf_);
        buf_ = s.buf_;
        length_ = s.length_;
        s.buf_ = nullptr;
        s.length_ = 0;
    }
    return *this;
}
CStr& CStr::operator+=(const char* s) {
    if (!s || !*s)
        return *this;
    int n = int(std::strlen(s));
    char* b = static_cast<char*>(HostAlloc(std::size_t(length_) + n + 1));
    if (!b)
        throw std::bad_alloc();
    if (length_)
        std::memcpy(b, buf_, length_);
    std::memcpy(b + length_, s, n + 1);
    HostFree(buf_);
    buf_ = b;
    length_ += n;
    return *this;
}

const char* CStr::data() const { return buf_ ? buf_ : ""; }

void CStr::printf(const char* format, ...) {
    va_list ap;
    va_start(ap, format);
    va_list ap2;
    va_copy(ap2, ap);
    int n = std::vsnprintf(nullptr, 0, format, ap);
    va_end(ap);
    if (n < 0) {
        va_end(ap2);
        assign("", 0);
        return;
    }
    char* b = static_cast<char*>(HostAlloc(std::size_t(n) + 1));
    if (!b) {
        va_end(ap2);
        throw std::bad_alloc();
    }
    std::vsnprintf(b, std::size_t(n) + 1, format, ap2);
    va_end(ap2);
    HostFree(buf_);
    buf_ = b;
    length_ = n;
}

bool CStr::operator==(const char* s) const { return std::strcmp(data(), s ? s : "") == 0; }

void CStr::assign(const char* s, int n) {
    char* b = nullptr;
    if (s && n > 0) {
        b = static_cast<char*>(HostAlloc(std::size_t(n) + 1));
        if (!b)
            throw std::bad_alloc();
        std::memcpy(b, s, n);
        b[n] = '\0';
    } else {
        n = 0;
    }
    HostFree(buf_);
    buf_ = b;
    length_ = n;
}
