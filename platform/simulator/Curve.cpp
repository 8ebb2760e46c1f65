#include "simulator/Curve.h"

#include <algorithm>
#include <cmath>

namespace simulator {

Curve::Curve(const std::vector<Point>& points, double period, bool isStepped)
    : mPeriod(period), mIsStepped(isStepped) {
    mPoints.reserve(points.size() + 2);
    mPoints.push_back({points.back().time - period, points.back().value});
    mPoints.insert(mPoints.end(), points.begin(), points.end());
    mPoints.push_back({points.front().time + period, points.front().value});
}

double Curve::valueBetween(const Point& begin, const Point& end, double time) const {
    if (mIsStepped) {
        return begin.value;
    }
    const double part = (time - begin.time) / (end.time - begin.time);
    return begin.value + (end.value - begin.value) * part;
}

double Curve::valueAt(double seconds) const {
    const double time = std::fmod(seconds, mPeriod);
    const auto end = std::upper_bound(mPoints.begin(), mPoints.end(), time,
                                      [](double moment, const Point& point) { return moment < point.time; });
    return valueBetween(*(end - 1), *end, time);
}

double Curve::integralOfRound(double seconds) const {
    double area = 0.0;
    for (std::size_t i = 1; i < mPoints.size(); ++i) {
        const Point& begin = mPoints[i - 1];
        const Point& end = mPoints[i];
        const double from = std::max(begin.time, 0.0);
        const double to = std::min(end.time, seconds);
        if (from < to) {
            // On a straight line, the mean is the value in the middle.
            area += valueBetween(begin, end, (from + to) / 2.0) * (to - from);
        }
    }
    return area;
}

double Curve::integralTo(double seconds) const {
    const double rounds = std::floor(seconds / mPeriod);
    return rounds * integralOfRound(mPeriod) + integralOfRound(std::fmod(seconds, mPeriod));
}

}  // namespace simulator
