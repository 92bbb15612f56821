// Entry point shared by every doctest test program.
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
    // A crash must end the test program, not wait on an error box nobody will close.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
#endif
    doctest::Context context;
    context.setOption("no-colors", true);
    context.applyCommandLine(argc, argv);
    return context.run();
}
