// Creating the one palette image of a request and sending it as PNG.
#include "canvas.h"

#include <cstdio>
#include <cstdlib>

gdImagePtr canvas_create(int width, int height)
{
    gdImagePtr im = gdImageCreate(width, height);
    if (!im) {
        std::fprintf(stderr, "rdr_sfc_pty_img: cannot create a %d x %d image\n", width, height);
        std::exit(1);
    }
    return im;
}

void canvas_send(gdImagePtr im)
{
    std::fputs("Content-type: image/png\n\n", stdout);
    int size = 0;
    void *png = gdImagePngPtrEx(im, &size, -1);
    if (png) {
        std::fwrite(png, 1, (std::size_t)size, stdout);
        gdFree(png);
    }
    gdImageDestroy(im);
}
