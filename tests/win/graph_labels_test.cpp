// Labels and lines of the graph and the ruler, read from the GDI calls themselves: each
// drawing is recorded into an enhanced metafile and its text and line records are
// compared with where the mapping puts them.
#include "doctest/doctest.h"
#include "editor/graph_paint.h"
#include "host/colorman.h"
#include "tests/win/graph_test_support.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <string>

using namespace graphtest;

namespace {

constexpr DWORD kFlags = CC_DRAWBG | CC_DRAWRULER | CC_SHOWSCROLLBARS | CC_SHOWPOSWINDOW;

/// Height of "1234567890" in the host's user-interface font.
int labelHeight() {
    HDC screen = GetDC(nullptr);
    HGDIOBJ old = SelectObject(screen, GetUIFont());
    SIZE size{};
    GetTextExtentPoint32A(screen, "1234567890", 10, &size);
    SelectObject(screen, old);
    ReleaseDC(nullptr, screen);
    return size.cy;
}

std::vector<Record> recordGraph(OpenEditor& ed) {
    RECT client{};
    GetClientRect(ed.graph(), &client);
    return RecordDrawing([&](HDC hdc) { DrawGraph(ed.editor(), hdc, client, 0); });
}

std::vector<Record> recordRuler(OpenEditor& ed) {
    return RecordDrawing([&](HDC hdc) { DrawRuler(ed.editor(), ed.strip(), hdc); });
}

/// The horizontal lines spanning the whole client width, by row.
std::vector<int> fullWidthRows(const std::vector<Record>& records, const RECT& client) {
    std::vector<int> rows;
    for (const Line& l : Lines(records))
        if (l.y0 == l.y1 && l.x0 == client.left && l.x1 == client.right)
            rows.push_back(l.y0);
    return rows;
}

} // namespace

TEST_CASE_FIXTURE(edtest::EditorFixture, "grid labels switch from whole numbers to decimals at "
                                         "y scale 158.12") {
    OpenEditor ed(1, kFlags);
    const int h = labelHeight();

    ed.SetView(2.0f, 158.11f, -27, 0);
    std::vector<Record> texts = Texts(recordGraph(ed));
    view::ViewMapping m = ed.View();
    REQUIRE(texts.size() >= 2);
    for (const Record& t : texts) {
        CAPTURE(t.text);
        CHECK(t.text.find('.') == std::string::npos);
        const int v = std::atoi(t.text.c_str());
        CHECK(t.x == 2);
        CHECK(t.y == m.Row(float(v)) - h / 2);
    }

    ed.SetView(2.0f, 158.12f, -27, 0);
    texts = Texts(recordGraph(ed));
    m = ed.View();
    REQUIRE(texts.size() >= 10);
    int decimals = 0;
    for (const Record& t : texts) {
        CAPTURE(t.text);
        const double v = std::atof(t.text.c_str());
        // Every label is a multiple of 0.1 written without trailing zeros.
        CHECK(std::fabs(v * 10 - std::round(v * 10)) < 1e-6);
        const bool decimal = t.text.find('.') != std::string::npos;
        if (decimal)
            CHECK(t.text.back() != '0');
        decimals += decimal;
        CHECK(t.x == 2);
        CHECK(std::abs(t.y - (m.Row(float(v)) - h / 2)) <= 1); // v is the rounded label
    }
    CHECK(decimals > 0);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "major and minor grid lines at the mapped rows") {
    OpenEditor ed(1, kFlags);
    // ys 0.5: major step 100, minor 10.
    ed.SetView(2.0f, 0.5f, -27, 0);
    const std::vector<Record> rec = recordGraph(ed);
    const view::ViewMapping m = ed.View();
    RECT client{};
    GetClientRect(ed.graph(), &client);
    const std::vector<int> rows = fullWidthRows(rec, client);
    const auto has = [&](int row) {
        return std::find(rows.begin(), rows.end(), row) != rows.end();
    };
    for (int v = -100; v <= 100; v += 10) {
        CAPTURE(v);
        CHECK(has(m.Row(float(v))));
    }
    CHECK_FALSE(has(m.Row(5.0f)));
    // The zero line: three rows.
    CHECK(has(m.Row(0.0f) - 1));
    CHECK(has(m.Row(0.0f) + 1));
    // Labels for the major lines only.
    std::vector<std::string> labels;
    for (const Record& t : Texts(rec))
        labels.push_back(t.text);
    CHECK(std::find(labels.begin(), labels.end(), "100") != labels.end());
    CHECK(std::find(labels.begin(), labels.end(), "-100") != labels.end());
    CHECK(std::find(labels.begin(), labels.end(), "10") == labels.end());
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "the ruler at u = 0.07 labels every 0.5 with ticks "
                                         "every 0.05") {
    OpenEditor ed(1, kFlags);
    const float xs = 60.0f / (5.0f * 0.07f);
    ed.SetView(xs, 1.0f, 0, 0); // X0 = -7
    const std::vector<Record> rec = recordRuler(ed);
    RECT client{};
    GetClientRect(ed.strip(), &client);
    REQUIRE(client.right > 360);

    // Labels at column + 3, top 0: column = trunc(x * xs + 7).
    const std::vector<Record> texts = Texts(rec);
    std::map<std::string, int> at;
    for (const Record& t : texts) {
        CHECK(t.y == 0);
        at[t.text] = t.x;
    }
    const std::pair<const char*, float> expected[] = {
        {"0", 0.0f}, {"0.5", 0.5f}, {"1", 1.0f}, {"1.5", 1.5f}, {"2", 2.0f}};
    for (const auto& [text, x] : expected) {
        CAPTURE(text);
        REQUIRE(at.count(text) == 1);
        CHECK(at[text] == int(x * xs + 7.0f) + 3);
    }

    // Ticks: a full-height black line at each label, short ticks every 0.05 between.
    int full = 0, shortTicks = 0;
    std::vector<int> columns;
    for (const Line& l : Lines(rec)) {
        if (l.x0 != l.x1)
            continue; // the frame
        if (l.y0 == client.top && l.y1 == client.bottom + 1)
            ++full;
        else if (l.y0 == client.bottom - 2 && l.y1 == client.bottom + 1)
            ++shortTicks;
        else
            continue;
        columns.push_back(l.x0);
    }
    CHECK(full == int(texts.size()));
    // Between the labels 0 and 0.5: nine short ticks at 0.05 .. 0.45.
    int between = 0;
    for (int c : columns)
        between += c > at["0"] - 3 && c < at["0.5"] - 3;
    CHECK(between == 9);
    for (size_t i = 1; i < columns.size(); ++i) {
        const int gap = columns[i] - columns[i - 1];
        CHECK(gap >= 8); // 0.05 * 171.4 = 8.57 pixels
        CHECK(gap <= 9);
    }
    CHECK(shortTicks == int(columns.size()) - full);
}

TEST_CASE_FIXTURE(edtest::EditorFixture, "the ruler with whole-number labels") {
    OpenEditor ed(1, kFlags);
    // xs 4: u = 3, so L = 20 (n = 4) with ticks every 2.
    ed.SetView(4.0f, 1.0f, -20, 0); // X0 = -47
    const std::vector<Record> rec = recordRuler(ed);
    // k = trunc(0 / 4) + trunc(-47 / 4) = -11; first tick s = -11 - (-1) = -10.
    std::map<std::string, int> at;
    for (const Record& t : Texts(rec))
        at[t.text] = t.x;
    REQUIRE(at.count("-10") == 0); // -10 is a tick, not a label
    REQUIRE(at.count("0") == 1);
    CHECK(at["0"] == 0 * 4 + 47 + 3);
    CHECK(at["20"] == 20 * 4 + 47 + 3);
    CHECK(at["40"] == 40 * 4 + 47 + 3);
    CHECK(at.count("10") == 0);
    // The first line drawn is the tick at s = -10, column 7.
    const std::vector<Line> lines = Lines(rec);
    bool sawFirst = false;
    for (const Line& l : lines)
        sawFirst |= l.x0 == -10 * 4 + 47 && l.x1 == l.x0;
    CHECK(sawFirst);
}
