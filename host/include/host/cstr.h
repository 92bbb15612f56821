// CStr: the host's 8-bit string. Its buffer lives in the host heap, so a CStr may be
// filled in one module and released in another.
#pragma once

#include "host/export.h"
#include "host/heap.h"

class HOST_API CStr {
public:
    CStr();
    CStr(const char* s);
    CStr(const CStr& s);
    CStr(CStr&& s) noexcept;
    ~CStr();

    CStr& operator=(const char* s);
    CStr& operator=(const CStr& s);
    CStr& operator=(CStr&& s) noexcept;
    CStr& operator+=(const char* s);

    /// The text; never null (an empty string when nothing was set).
    const char* data() const;
    operator const char*() const { return data(); }
    int Length() const { return length_; }
    bool isNull() const { return length_ == 0; }

    /// Formats like printf, replacing the text.
    void printf(const char* format, ...);

    bool operator==(const char* s) const;
    bool operator!=(const char* s) const { return !(*this == s); }
    bool operator==(const CStr& s) const { return *this == s.data(); }
    bool operator!=(const CStr& s) const { return !(*this == s.data()); }

private:
    void assign(const char* s, int n);

    char* buf_;  // owned, zero-terminated, null while empty
    int length_; // characters before the terminator
};
