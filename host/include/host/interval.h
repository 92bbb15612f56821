// Host time and validity intervals.
//
// TimeValue counts ticks. An Interval is a closed range [start, end] of times; the empty
// interval has both ends at TIME_NegInfinity (0x80000000), so an empty interval contains
// no time at all, not even TIME_NegInfinity.
#pragma once

#include <algorithm>

typedef int TimeValue;

#define TIME_NegInfinity ((TimeValue)0x80000000)
#define TIME_PosInfinity ((TimeValue)0x7fffffff)

class Interval {
public:
    constexpr Interval() : start_(TIME_NegInfinity), end_(TIME_NegInfinity) {}
    constexpr Interval(TimeValue s, TimeValue e) : start_(s), end_(e) {}

    TimeValue Start() const { return start_; }
    TimeValue End() const { return end_; }
    void Set(TimeValue s, TimeValue e) {
        start_ = s;
        end_ = e;
    }
    void SetStart(TimeValue s) { start_ = s; }
    void SetEnd(TimeValue e) { end_ = e; }

    void SetEmpty() { start_ = end_ = TIME_NegInfinity; }
    void SetInfinite() {
        start_ = TIME_NegInfinity;
        end_ = TIME_PosInfinity;
    }
    void SetInstant(TimeValue t) { start_ = end_ = t; }

    bool Empty() const { return start_ == TIME_NegInfinity && end_ == TIME_NegInfinity; }
    bool IsInfinite() const { return start_ == TIME_NegInfinity && end_ == TIME_PosInfinity; }

    /// Whether t lies in [start, end]. The empty interval holds nothing.
    bool InInterval(TimeValue t) const { return !Empty() && t >= start_ && t <= end_; }
    bool InInterval(const Interval& i) const {
        return !i.Empty() && InInterval(i.start_) && InInterval(i.end_);
    }

    /// Intersection. Disjoint intervals, or either one empty, give the empty interval.
    Interval operator&(const Interval& o) const {
        if (Empty() || o.Empty())
            return Interval();
        TimeValue s = std::max(start_, o.start_);
        TimeValue e = std::min(end_, o.end_);
        if (s > e)
            return Interval();
        return Interval(s, e);
    }
    Interval& operator&=(const Interval& o) { return *this = *this & o; }

    bool operator==(const Interval& o) const { return start_ == o.start_ && end_ == o.end_; }
    bool operator!=(const Interval& o) const { return !(*this == o); }

private:
    TimeValue start_; // first time of the range
    TimeValue end_;   // last time of the range (inclusive)
};

#define FOREVER Interval(TIME_NegInfinity, TIME_PosInfinity)
#define NEVER Interval(TIME_NegInfinity, TIME_NegInfinity)
