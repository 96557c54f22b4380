// Draws icons from lines, arcs and areas, so that they are sharp at every scale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "ui/theme.h"

struct TIconPoint {
    double x = 0;
    double y = 0;
};

// A square picture drawn in the units of a grid of 24 by 24, whatever its size in pixels. Lines lie on whole
// pixels, their ends are round, and what is drawn later covers what was drawn before.
class TIconCanvas {
public:
    // `size`: width and height in pixels.
    explicit TIconCanvas(int size);

    void Line(std::initializer_list<TIconPoint> points, double width, TColour colour);
    // Angles in degrees, clockwise from three o'clock.
    void Arc(TIconPoint centre, double radius, double from, double to, double width, TColour colour);
    void Circle(TIconPoint centre, double radius, TColour colour);
    // An area between straight edges, its corners in order.
    void Polygon(std::initializer_list<TIconPoint> corners, TColour colour);
    void RoundedBox(TIconPoint topLeft, TIconPoint bottomRight, double radius, TColour colour);

    int Size() const { return size_; }
    // Rows from the top, each pixel 0xAARRGGBB with the colour multiplied by its alpha: what AlphaBlend
    // takes.
    const std::vector<std::uint32_t>& Pixels() const { return pixels_; }

private:
    // Colours every pixel by how far its centre lies inside of a shape; `distance` is in pixels, negative
    // inside.
    template <typename Distance>
    void Fill(TColour colour, Distance distance);
    double LineWidth(double width) const;
    TIconPoint OnLineGrid(TIconPoint point, double pixelWidth) const;
    TIconPoint OnPixelGrid(TIconPoint point) const;

    int size_;
    double scale_;
    std::vector<std::uint32_t> pixels_;
};
