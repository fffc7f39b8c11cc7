// The process part of a request's floor: a program linked exactly like the CGI program that
// answers with a blank palette picture of the given size, written the way the program writes its
// own. Usage: rdr_bench_blank WIDTH HEIGHT; exit status 2 for sizes no canvas can take.
#include <cstdio>
#include <cstdlib>

#include "canvas.h"
#include "view.h"

int main(int argc, char **argv)
{
    int width = argc == 3 ? std::atoi(argv[1]) : 0;
    int height = argc == 3 ? std::atoi(argv[2]) : 0;
    if (!canvas_fits(width, height)) {
        std::fprintf(stderr, "usage: rdr_bench_blank WIDTH HEIGHT (1 to %lld each)\n", CANVAS_MAX);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::fputs("HTTP/1.0 200 OK\n", stdout);
    gdImagePtr im = gdImageCreate(width, height);
    if (!im) return 1;
    gdImageColorAllocate(im, 255, 255, 255);
    canvas_send(im);
    return 0;
}
