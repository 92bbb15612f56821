// Session output on stdout, flushed line by line (Wine's console may be a pipe).
#include "session_report.h"

#include <cstdarg>
#include <cstdio>

namespace session {
namespace {

void Line(const char* prefix, const char* format, va_list args) {
    std::fputs(prefix, stdout);
    std::vprintf(format, args);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

} // namespace

void Report::Step(const char* format, ...) {
    char prefix[16];
    std::snprintf(prefix, sizeof prefix, "%2d. ", ++steps_);
    va_list args;
    va_start(args, format);
    Line(prefix, format, args);
    va_end(args);
}

void Report::Note(const char* format, ...) {
    va_list args;
    va_start(args, format);
    Line("      ", format, args);
    va_end(args);
}

bool Report::Check(bool ok, const char* format, ...) {
    ++checks_;
    if (!ok)
        ++failures_;
    va_list args;
    va_start(args, format);
    Line(ok ? "    ok  " : "    FAILED  ", format, args);
    va_end(args);
    return ok;
}

} // namespace session
