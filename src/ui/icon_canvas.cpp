#include "ui/icon_canvas.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kGrid = 24;

double DistanceToSegment(TIconPoint point, TIconPoint from, TIconPoint to) {
    const double x = to.x - from.x;
    const double y = to.y - from.y;
    const double length = x * x + y * y;
    const double along =
        length == 0 ? 0 : std::clamp(((point.x - from.x) * x + (point.y - from.y) * y) / length, 0.0, 1.0);
    return std::hypot(point.x - from.x - along * x, point.y - from.y - along * y);
}

bool IsInside(TIconPoint point, const std::vector<TIconPoint>& corners) {
    bool inside = false;
    for (std::size_t index = 0, last = corners.size() - 1; index < corners.size(); last = index++) {
        const TIconPoint& from = corners[last];
        const TIconPoint& to = corners[index];
        if ((to.y > point.y) != (from.y > point.y) &&
            point.x < (from.x - to.x) * (point.y - to.y) / (from.y - to.y) + to.x) {
            inside = !inside;
        }
    }
    return inside;
}

std::uint32_t Blend(std::uint32_t below, TColour colour, double coverage) {
    const auto channel = [&](int shift, double value) {
        const double old = (below >> shift) & 0xFF;
        return static_cast<std::uint32_t>(std::lround(value * coverage + old * (1 - coverage))) << shift;
    };
    return channel(24, 255) | channel(16, colour.red) | channel(8, colour.green) | channel(0, colour.blue);
}

}  // namespace

TIconCanvas::TIconCanvas(int size)
    : size_(size),
      scale_(size / kGrid),
      pixels_(static_cast<std::size_t>(size) * static_cast<std::size_t>(size)) {}

template <typename Distance>
void TIconCanvas::Fill(TColour colour, Distance distance) {
    std::size_t index = 0;
    for (int y = 0; y < size_; ++y) {
        for (int x = 0; x < size_; ++x, ++index) {
            const double coverage = std::clamp(0.5 - distance(TIconPoint{x + 0.5, y + 0.5}), 0.0, 1.0);
            if (coverage > 0) {
                pixels_[index] = Blend(pixels_[index], colour, coverage);
            }
        }
    }
}

double TIconCanvas::LineWidth(double width) const {
    return std::max(1.0, std::round(width * scale_));
}

// The middle of a line of an odd number of pixels lies on the middle of a pixel, otherwise between two.
TIconPoint TIconCanvas::OnLineGrid(TIconPoint point, double pixelWidth) const {
    const auto snapped = [&](double value) {
        return std::round(value * scale_ - pixelWidth / 2) + pixelWidth / 2;
    };
    return {snapped(point.x), snapped(point.y)};
}

TIconPoint TIconCanvas::OnPixelGrid(TIconPoint point) const {
    return {std::round(point.x * scale_), std::round(point.y * scale_)};
}

void TIconCanvas::Line(std::initializer_list<TIconPoint> points, double width, TColour colour) {
    const double pixelWidth = LineWidth(width);
    std::vector<TIconPoint> placed;
    for (const TIconPoint& point : points) {
        placed.push_back(OnLineGrid(point, pixelWidth));
    }
    Fill(colour, [&](TIconPoint pixel) {
        double nearest = 2.0 * size_;
        for (std::size_t index = 1; index < placed.size(); ++index) {
            nearest = std::min(nearest, DistanceToSegment(pixel, placed[index - 1], placed[index]));
        }
        return nearest - pixelWidth / 2;
    });
}

void TIconCanvas::Arc(TIconPoint centre, double radius, double from, double to, double width,
                      TColour colour) {
    const double pixelWidth = LineWidth(width);
    const TIconPoint middle = OnLineGrid(centre, pixelWidth);
    const double pixelRadius = std::round(radius * scale_);
    const double radian = std::numbers::pi / 180;
    const auto onArc = [&](double angle) {
        return TIconPoint{middle.x + pixelRadius * std::cos(angle * radian),
                          middle.y + pixelRadius * std::sin(angle * radian)};
    };
    Fill(colour, [&](TIconPoint pixel) {
        double angle = std::atan2(pixel.y - middle.y, pixel.x - middle.x) / radian;
        while (angle < from) {
            angle += 360;
        }
        const auto distanceTo = [&](TIconPoint end) { return std::hypot(pixel.x - end.x, pixel.y - end.y); };
        const double distance =
            angle <= to ? std::abs(std::hypot(pixel.x - middle.x, pixel.y - middle.y) - pixelRadius)
                        : std::min(distanceTo(onArc(from)), distanceTo(onArc(to)));
        return distance - pixelWidth / 2;
    });
}

void TIconCanvas::Circle(TIconPoint centre, double radius, TColour colour) {
    const TIconPoint middle{centre.x * scale_, centre.y * scale_};
    Fill(colour, [&](TIconPoint pixel) {
        return std::hypot(pixel.x - middle.x, pixel.y - middle.y) - radius * scale_;
    });
}

void TIconCanvas::Polygon(std::initializer_list<TIconPoint> corners, TColour colour) {
    std::vector<TIconPoint> placed;
    for (const TIconPoint& corner : corners) {
        placed.push_back(OnPixelGrid(corner));
    }
    Fill(colour, [&](TIconPoint pixel) {
        double nearest = 2.0 * size_;
        for (std::size_t index = 0; index < placed.size(); ++index) {
            nearest = std::min(nearest,
                               DistanceToSegment(pixel, placed[index], placed[(index + 1) % placed.size()]));
        }
        return IsInside(pixel, placed) ? -nearest : nearest;
    });
}

void TIconCanvas::RoundedBox(TIconPoint topLeft, TIconPoint bottomRight, double radius, TColour colour) {
    const TIconPoint from = OnPixelGrid(topLeft);
    const TIconPoint to = OnPixelGrid(bottomRight);
    const double corner = std::min({radius * scale_, (to.x - from.x) / 2, (to.y - from.y) / 2});
    Fill(colour, [&](TIconPoint pixel) {
        const double x = std::abs(pixel.x - (from.x + to.x) / 2) - (to.x - from.x) / 2 + corner;
        const double y = std::abs(pixel.y - (from.y + to.y) / 2) - (to.y - from.y) / 2 + corner;
        return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - corner;
    });
}
