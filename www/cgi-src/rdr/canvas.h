// The palette image of a picture and the writing of the HTTP body that carries it.
#ifndef CANVAS_H
#define CANVAS_H

#include <gd.h>

// Pixel row y (0 <= y < height) of a canvas, for layers that paint row by row. Storing a palette
// entry in it is what gdImageSetPixel does inside the canvas: no layer sets a clip or a brush.
inline unsigned char *canvas_row(gdImagePtr im, int y) { return im->pixels[y]; }

// Every pixel of the canvas in one colour, as gdImageFilledRectangle over the whole canvas paints
// it (the fast road row by row, the straightforward one through the library).
void canvas_fill(gdImagePtr im, int colour);

// Writes "Content-type: image/png", the empty line and the PNG; destroys the image.
void canvas_send(gdImagePtr im);

#endif
