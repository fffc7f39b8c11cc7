// A float field on 1 km points, row 0 the southern edge, with its origin at (x0, y0) km of the
// whole domain. Sampling outside the points takes the nearest edge point, so every lookup is
// defined.
#ifndef SAMPLE_FIELD_H
#define SAMPLE_FIELD_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace sample {

struct KmField {
    int cols = 0, rows = 0;
    double x0 = 0, y0 = 0;
    std::vector<float> v;

    KmField() = default;
    KmField(int c, int r, double x_origin = 0, double y_origin = 0, float fill = 0)
        : cols(c), rows(r), x0(x_origin), y0(y_origin), v((std::size_t)c * r, fill)
    {
    }
    float &at(int c, int r) { return v[(std::size_t)r * cols + c]; }
    float at(int c, int r) const { return v[(std::size_t)r * cols + c]; }

    float bilinear(double x_km, double y_km) const
    {
        double x = std::clamp(x_km - x0, 0.0, cols - 1.001), y = std::clamp(y_km - y0, 0.0, rows - 1.001);
        int c = (int)x, r = (int)y;
        double fx = x - c, fy = y - r;
        double low = at(c, r) * (1 - fx) + at(c + 1, r) * fx;
        double high = at(c, r + 1) * (1 - fx) + at(c + 1, r + 1) * fx;
        return (float)(low * (1 - fy) + high * fy);
    }

    float nearest(double x_km, double y_km) const
    {
        int c = (int)std::lround(std::clamp(x_km - x0, 0.0, cols - 1.0));
        int r = (int)std::lround(std::clamp(y_km - y0, 0.0, rows - 1.0));
        return at(c, r);
    }
};

}  // namespace sample

#endif
