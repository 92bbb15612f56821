// The client messages of point editing, as scenarios shared by two tests: the native one
// (tests/core/messages_test.cpp, through the platform's message sink) and the Windows one
// (tests/win/messages_win_test.cpp, a real window that records every message it gets).
//
// A scenario builds a curve, prepares it with nothing to hear, then acts; the act returns
// the messages the client must receive, in order, with nothing before, between or after.
#pragma once

#include "core/curve_edit_fixture.h"
#include "curvectl/messages.h"

#include <doctest/doctest.h>

#include <ostream>
#include <vector>

namespace edit_test {

struct SentMessage {
    UINT msg;
    WPARAM wParam;
    LPARAM lParam;
    bool operator==(const SentMessage& o) const {
        return msg == o.msg && wParam == o.wParam && lParam == o.lParam;
    }
};

inline std::ostream& operator<<(std::ostream& os, const SentMessage& m) {
    return os << "{0x" << std::hex << m.msg << ", 0x" << m.wParam << std::dec << "}";
}

/// What the client must hear from curve c: `msg` with `wParam`, lParam the curve.
inline SentMessage From(Curve& c, UINT msg, WPARAM wParam) {
    return SentMessage{msg, wParam, LPARAM(static_cast<ICurve*>(&c))};
}

struct MessageScenario {
    const char* name;
    std::vector<CurveKnot> knots;
    void (*prepare)(Curve& c); // may be null
    std::vector<SentMessage> (*act)(Curve& c);
};

namespace scenario_detail {

inline std::vector<CurveKnot> threePoints() {
    return {Knot(0.0f, 0.0f),
            Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
            Knot(1.0f, 1.0f)};
}

inline std::vector<CurveKnot> sevenPoints() {
    std::vector<CurveKnot> k;
    for (int i = 0; i < 7; ++i)
        k.push_back(Knot(i / 6.0f, i / 6.0f));
    return k;
}

inline void selectTwoAndFive(Curve& c) { Select(c, {2, 5}); }
inline void selectOne(Curve& c) { Select(c, {1}); }

} // namespace scenario_detail

inline const std::vector<MessageScenario>& MessageScenarios() {
    using namespace scenario_detail;
    static const std::vector<MessageScenario> all = {
        {"setting a point to the position it has still reports it", threePoints(), nullptr,
         [](Curve& c) {
             c.SetKnotPosition(kNow, 1, Point2(0.5f, 0.5f));
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_CHANGED, 1)};
         }},
        {"in-tangent setter: high word 1; out-tangent setter: high word 2", threePoints(), nullptr,
         [](Curve& c) {
             c.SetInHandle(kNow, 1, Point2(0.3f, 0.5f), TRUE, TRUE);
             c.SetOutHandle(kNow, 1, Point2(0.8f, 0.5f), TRUE, TRUE);
             return std::vector<SentMessage>{From(c, CURVE_MSG_TANGENT_CHANGED, 0x10001),
                                             From(c, CURVE_MSG_TANGENT_CHANGED, 0x20001)};
         }},
        {"a tangent move of 0.0001 or less, or notify off, is not reported", threePoints(), nullptr,
         [](Curve& c) {
             c.SetOutHandle(kNow, 1, Point2(0.6f, 0.5f) + Point2(0.0f, 0.00005f), TRUE, TRUE);
             c.SetInHandle(kNow, 1, Point2(0.2f, 0.5f), TRUE, FALSE);
             return std::vector<SentMessage>{};
         }},
        {"SetKnot: position, then in-tangent with high word 1, out-tangent without", threePoints(),
         nullptr,
         [](Curve& c) {
             c.SetKnot(kNow, 1,
                       CurveKnot(Point2(0.4f, 0.6f), Point2(-0.2f, 0.0f), Point2(0.3f, 0.1f),
                                 KNOT_TYPE_BEZIER_CORNER),
                       FALSE, TRUE);
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_CHANGED, 1),
                                             From(c, CURVE_MSG_TANGENT_CHANGED, 0x10001),
                                             From(c, CURVE_MSG_TANGENT_CHANGED, 1)};
         }},
        {"SetKnot with checks sends the same three, once each", threePoints(), nullptr,
         [](Curve& c) {
             c.SetKnot(kNow, 1,
                       CurveKnot(Point2(0.4f, 0.6f), Point2(-0.2f, 0.0f), Point2(0.3f, 0.1f),
                                 KNOT_TYPE_BEZIER_CORNER),
                       TRUE, TRUE);
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_CHANGED, 1),
                                             From(c, CURVE_MSG_TANGENT_CHANGED, 0x10001),
                                             From(c, CURVE_MSG_TANGENT_CHANGED, 1)};
         }},
        {"SetKnot selecting its point reports the selection after the position", threePoints(),
         nullptr,
         [](Curve& c) {
             CurveKnot k = c.Knots()[1];
             k.flags |= KNOT_SELECTED;
             c.SetKnot(kNow, 1, k, TRUE, TRUE);
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_CHANGED, 1),
                                             From(c, CURVE_MSG_SELECTION, 1)};
         }},
        {"SetKnot without notify is silent", threePoints(), nullptr,
         [](Curve& c) {
             c.SetKnot(kNow, 1,
                       CurveKnot(Point2(0.4f, 0.6f), Point2(-0.2f, 0.0f), Point2(0.3f, 0.1f),
                                 KNOT_TYPE_BEZIER_CORNER | KNOT_SELECTED),
                       TRUE, FALSE);
             return std::vector<SentMessage>{};
         }},
        {"a smooth handle drag reports both tangents in one message", threePoints(), nullptr,
         [](Curve& c) {
             c.DragHandle(kNow, 1, 0x200, 0.0f, 0.1f);
             return std::vector<SentMessage>{From(c, CURVE_MSG_TANGENT_CHANGED, 0x30001)};
         }},
        {"a breaking drag reports the dragged tangent only", threePoints(), nullptr,
         [](Curve& c) {
             c.DragHandle(kNow, 1, 0x200 | 0x2, 0.0f, 0.1f);
             return std::vector<SentMessage>{From(c, CURVE_MSG_TANGENT_CHANGED, 0x20001)};
         }},
        {"a drag that moves nothing still reports, with no change bits", threePoints(), nullptr,
         [](Curve& c) {
             c.DragHandle(kNow, 1, 0x200 | 0x2, 0.0f, 0.0f);
             return std::vector<SentMessage>{From(c, CURVE_MSG_TANGENT_CHANGED, 1)};
         }},
        {"SetHandleConstrained reports like a drag", threePoints(), nullptr,
         [](Curve& c) {
             c.SetHandleConstrained(kNow, 1, 0x100, Point2(-0.2f, 0.0f));
             return std::vector<SentMessage>{From(c, CURVE_MSG_TANGENT_CHANGED, 0x30001)};
         }},
        {"scaling: point changed before the tangent message of the same point", sevenPoints(),
         [](Curve& c) {
             Select(c, {2, 4});
             c.Knots()[4].outTan = Point2(0.1f, 0.1f);
             c.InvalidateCache();
         },
         [](Curve& c) {
             c.ScaleSelectedY(kNow, 0.0f, 0.5f, FALSE);
             return std::vector<SentMessage>{
                 From(c, CURVE_MSG_POINT_CHANGED, 2), From(c, CURVE_MSG_TANGENT_CHANGED, 2),
                 From(c, CURVE_MSG_POINT_CHANGED, 4), From(c, CURVE_MSG_TANGENT_CHANGED, 0x20004)};
         }},
        {"deleting points 2 and 5 reports 5 first, then 2", sevenPoints(), selectTwoAndFive,
         [](Curve& c) {
             c.DeleteSelectedKnots();
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_DELETED, 5),
                                             From(c, CURVE_MSG_POINT_DELETED, 2)};
         }},
        {"a split reports the shortened handles, the insertion, then a selection of 1",
         {Knot(0.0f, 0.0f),
          Knot(0.5f, 0.5f, KNOT_TYPE_BEZIER_SMOOTH, Point2(-0.1f, 0.0f), Point2(0.1f, 0.0f)),
          Knot(1.0f, 1.0f, KNOT_TYPE_BEZIER_CORNER, Point2(-0.1f, 0.0f), Point2())},
         selectOne,
         [](Curve& c) {
             c.InsertKnotAtX(kNow, 1, 0.75f, 1);
             return std::vector<SentMessage>{From(c, CURVE_MSG_TANGENT_CHANGED, 0x20001),
                                             From(c, CURVE_MSG_TANGENT_CHANGED, 0x10002),
                                             From(c, CURVE_MSG_POINT_INSERTED, 2),
                                             From(c, CURVE_MSG_SELECTION, 1)};
         }},
        {"splitting between corners: inserted, then selection 1", sevenPoints(), selectTwoAndFive,
         [](Curve& c) {
             c.InsertKnotAtX(kNow, 0, 0.1f, 0);
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_INSERTED, 1),
                                             From(c, CURVE_MSG_SELECTION, 1)};
         }},
        {"a vertical segment is not split, and nothing is sent",
         {Knot(0.0f, 0.0f), Knot(0.5f, 0.2f, KNOT_TYPE_BEZIER_CORNER, Point2(), Point2(0.0f, 0.1f)),
          Knot(0.5f, 0.8f), Knot(1.0f, 1.0f)},
         selectOne,
         [](Curve& c) {
             c.InsertKnotAtX(kNow, 1, 0.5f, 1);
             return std::vector<SentMessage>{};
         }},
        {"a client's insertion of an unselected point reports the insertion only", threePoints(),
         selectOne,
         [](Curve& c) {
             c.InsertKnot(1, Knot(0.25f, 0.25f));
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_INSERTED, 1)};
         }},
        {"a client's deletion reports the index", threePoints(), nullptr,
         [](Curve& c) {
             c.DeleteKnot(1);
             return std::vector<SentMessage>{From(c, CURVE_MSG_POINT_DELETED, 1)};
         }},
        {"selection: count afterwards; nothing when empty stays empty or notify is off",
         sevenPoints(), nullptr,
         [](Curve& c) {
             c.SetSelectionEx(BitArray(), 4, TRUE); // empty stays empty: silent
             BitArray b(7);
             b.Set(1);
             b.Set(3);
             c.SetSelectionEx(b, 1, TRUE);
             c.SetSelectionEx(b, 1, TRUE); // unchanged but not empty: reported
             c.SetSelectionEx(BitArray(), 4, FALSE);
             c.SetSelectionEx(b, 4, TRUE);
             c.SetSelectionEx(b, 2, TRUE); // emptied: reported with 0
             return std::vector<SentMessage>{
                 From(c, CURVE_MSG_SELECTION, 2), From(c, CURVE_MSG_SELECTION, 2),
                 From(c, CURVE_MSG_SELECTION, 2), From(c, CURVE_MSG_SELECTION, 0)};
         }},
        {"numeric entry: one point changed per moved point", sevenPoints(), selectTwoAndFive,
         [](Curve& c) {
             c.SetSelectedY(kNow, 0.5f);
             c.SetSelectedX(kNow, 0.4f); // point 2 moves right, point 5 left to point 4
             return std::vector<SentMessage>{
                 From(c, CURVE_MSG_POINT_CHANGED, 2), From(c, CURVE_MSG_POINT_CHANGED, 5),
                 From(c, CURVE_MSG_POINT_CHANGED, 2), From(c, CURVE_MSG_POINT_CHANGED, 5)};
         }},
        {"type changes and whole-point stores are not reported", threePoints(), nullptr,
         [](Curve& c) {
             c.ChangeKnotType(kNow, 1, KNOT_TYPE_CORNER);
             c.StoreKnot(1, Knot(0.5f, 0.4f));
             return std::vector<SentMessage>{};
         }},
    };
    return all;
}

} // namespace edit_test
