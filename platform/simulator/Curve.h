#pragma once

#include <vector>

namespace simulator {

/// A figure over time that repeats for ever. It runs in straight lines between its points, and from the last
/// one to the first of the next round. A stepped curve keeps each point's value until the next point.
class Curve {
public:
    struct Point {
        double time;  ///< seconds; from 0, below the period
        double value;
    };

    /// Takes at least one point, with ascending times; `period` in seconds, above 0.
    Curve(const std::vector<Point>& points, double period, bool isStepped);

    /// `seconds` from 0.
    double valueAt(double seconds) const;

    /// The area under the curve from 0 to `seconds`.
    double integralTo(double seconds) const;

private:
    double integralOfRound(double seconds) const;
    double valueBetween(const Point& begin, const Point& end, double time) const;

    std::vector<Point> mPoints;  ///< also the last point of the previous round and the first of the next
    double mPeriod;
    bool mIsStepped;
};

}  // namespace simulator
