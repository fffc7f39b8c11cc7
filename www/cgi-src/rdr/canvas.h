// The palette canvas of a picture and the writing of the HTTP body that carries it.
#ifndef CANVAS_H
#define CANVAS_H

#include <gd.h>

constexpr long long CANVAS_MAX = 8192;
// The legend column beside the map area and the title band above it, in pixels.
constexpr int LEGEND_WIDTH = 35;
constexpr int TITLE_HEIGHT = 20;

// A canvas is only made when both sides are 1 to 8192 pixels.
inline bool canvas_fits(long long width, long long height)
{
    return width >= 1 && height >= 1 && width <= CANVAS_MAX && height <= CANVAS_MAX;
}

// The canvas of the request's picture in var: map area NI x NJ from the size and the map's aspect
// ratio, the whole image GI x GJ with the legend column and the title band. False when no canvas
// can be made from them.
bool canvas_size_of_request();

// A palette image; when the graphics library cannot make one the process ends (status 1)
// with one line on standard error, since nothing more can be answered.
gdImagePtr canvas_create(int width, int height);

// Pixel row y (0 <= y < height) of a canvas, for layers that paint row by row. Storing a palette
// entry in it is what gdImageSetPixel does inside the canvas: no layer sets a clip or a brush.
inline unsigned char *canvas_row(gdImagePtr im, int y) { return im->pixels[y]; }

// Every pixel of the canvas in one colour, as gdImageFilledRectangle over the whole canvas paints
// it (the fast road row by row, the straightforward one through the library).
void canvas_fill(gdImagePtr im, int colour);

// Writes "Content-type: image/png", the empty line and the PNG; destroys the image.
void canvas_send(gdImagePtr im);

#endif
