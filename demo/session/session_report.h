// What a scripted session prints: numbered steps, notes, and checks that count failures.
#pragma once

namespace session {

class Report {
public:
    /// "N. text": a new step of the session.
    void Step(const char* format, ...);
    /// An indented line of what happened.
    void Note(const char* format, ...);
    /// An indented "ok" or "FAILED" line; returns `ok`.
    bool Check(bool ok, const char* format, ...);

    int Checks() const { return checks_; }
    int Failures() const { return failures_; }

private:
    int steps_ = 0;
    int checks_ = 0;
    int failures_ = 0;
};

} // namespace session
