#pragma once

#include <vector>

namespace simulator {

/// A figure over time that repeats for ever. Between its points it runs in straight lines, also from the last
/// one to the first of the next round; a stepped curve keeps each point's value until the next one instead.
class Curve {
public:
    struct Point {
        double time;  ///< seconds, from 0 to below the period
        double value;
    };

    /// At least one point, times ascending; `period` in seconds, above 0.
    Curve(const std::vector<Point>& points, double period, bool isStepped);

    /// `seconds` from 0.
    double valueAt(double seconds) const;

    /// The area under the curve from 0 to `seconds`.
    double integralTo(double seconds) const;

private:
    double integralOfRound(double seconds) const;
    double valueBetween(const Point& begin, const Point& end, double time) const;

    std::vector<Point> mPoints;  ///< with the last one of the previous and the first one of the next round
    double mPeriod;
    bool mIsStepped;
};

}  // namespace simulator
