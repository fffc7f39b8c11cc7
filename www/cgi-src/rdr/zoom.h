// The one zoom transform and pixel mapping of the map area, shared by every layer that places
// map points: the grid, terrain, outlines, stations and the cross-section line.
#ifndef ZOOM_H
#define ZOOM_H

// The view: south-west corner (in the caller's units) and magnification.
struct ZoomView {
    float ox;
    float oy;
    float zm;
};

// How a layer steps: enlargement per step, at most so many steps, each moving by 1/divisor.
struct ZoomRule {
    int rate;
    int max_steps;
    int divisor;
};

// The rule that the request's zoom_rate selects (3: two steps of ninths; 2: seven of eighths);
// any other rate has no steps. Only a request with zoom_level above 0 zooms at all.
ZoomRule zoom_rule_of_request();

// The cross-section line always steps by eighths and doubling.
constexpr ZoomRule ZOOM_RULE_EIGHTHS = {2, 7, 8};

// Starts from `start` (magnification 1) and applies the request's zoom digits with `rule` over
// a domain of width x height. Only '1'..'9' are steps: any other character, '0' and the end of
// the digits included, ends the transform.
ZoomView zoom_view(double width, double height, ZoomRule rule, float start_x = 0, float start_y = 0);

// Truncation toward zero of a pixel position, held within a range that the graphics library's
// integer arithmetic can take, so absurd inputs cannot overflow.
int pixel_trunc(float v);

// A zoomed map position (km) to its pixel column and image row, with `rate` pixels per km.
inline int map_column(float x_zoomed, float rate) { return pixel_trunc(x_zoomed * rate); }
int map_row(float y_zoomed, float rate);

#endif
