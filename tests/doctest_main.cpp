// Entry point shared by every doctest test program.
//
// --counts-file=PATH (ours, taken off the command line before doctest sees it): at the end
// of the run, PATH gets one line "<passed> <failed> <skipped>", the test cases of this run
// as doctest counts them. The test command adds these up; a program that dies before the
// end leaves no file, and the test command counts it as one failure.
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace {

constexpr char kCountsOption[] = "--counts-file=";

std::string countsPath; // empty: no counts file

/// Writes the run's counts when it ends; listens only, reports nothing.
struct CountsListener : doctest::IReporter {
    explicit CountsListener(const doctest::ContextOptions&) {}

    void test_run_end(const doctest::TestRunStats& s) override {
        if (countsPath.empty())
            return;
        std::FILE* f = std::fopen(countsPath.c_str(), "w");
        if (!f)
            return;
        std::fprintf(f, "%u %u %u\n", s.numTestCasesPassingFilters - s.numTestCasesFailed,
                     s.numTestCasesFailed, s.numTestCases - s.numTestCasesPassingFilters);
        std::fclose(f);
    }

    void report_query(const doctest::QueryData&) override {}
    void test_run_start() override {}
    void test_case_start(const doctest::TestCaseData&) override {}
    void test_case_reenter(const doctest::TestCaseData&) override {}
    void test_case_end(const doctest::CurrentTestCaseStats&) override {}
    void test_case_exception(const doctest::TestCaseException&) override {}
    void subcase_start(const doctest::SubcaseSignature&) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData&) override {}
    void log_message(const doctest::MessageData&) override {}
    void test_case_skipped(const doctest::TestCaseData&) override {}
};

} // namespace

REGISTER_LISTENER("counts", 1, CountsListener);

int main(int argc, char** argv) {
#ifdef _WIN32
    // A crash must end the test program, not wait on an error box nobody will close.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
#endif
    std::vector<char*> args;
    for (int i = 0; i < argc; ++i) {
        if (i > 0 && std::strncmp(argv[i], kCountsOption, sizeof(kCountsOption) - 1) == 0)
            countsPath = argv[i] + sizeof(kCountsOption) - 1;
        else
            args.push_back(argv[i]);
    }
    // A stale file from an earlier run must not stand for this one.
    if (!countsPath.empty())
        std::remove(countsPath.c_str());
    doctest::Context context;
    context.setOption("no-colors", true);
    context.applyCommandLine(int(args.size()), args.data());
    return context.run();
}
