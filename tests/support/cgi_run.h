// Running the real program as a web server would, and reading its answer back.
#ifndef CGI_RUN_H
#define CGI_RUN_H

#include <gd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace cgi {

struct Answer {
    int exit_status = -1;     // the process's exit status, or -1 when it was killed
    bool timed_out = false;
    std::string out;          // everything on standard output
    std::string err;          // everything on standard error
    std::string status_line;  // up to the first line feed
    std::string content_type; // the header line after the status line
    std::string png;          // what follows the empty line
    bool framed = false;      // status line, content type and empty line as the protocol wants
};

// Runs the program (or another build of it) with QUERY_STRING set to `query` (unset when `query`
// is null), TZ "UTC0" unless `tz` says otherwise, a time limit and, when given, a limit of its
// address space in bytes.
Answer run(const char *query, int timeout_ms = 30000, const char *tz = "UTC0", const char *program = RDR_PROGRAM,
           long long address_space = 0);

// A decoded PNG.
class Picture {
public:
    explicit Picture(const std::string &png);
    bool ok() const { return im_ != nullptr; }
    int width() const { return gdImageSX(im_.get()); }
    int height() const { return gdImageSY(im_.get()); }
    bool is_palette() const { return !gdImageTrueColor(im_.get()); }
    int colors() const { return gdImageColorsTotal(im_.get()); }  // palette entries
    int index(int x, int y) const { return gdImageGetPixel(im_.get(), x, y); }
    uint32_t rgb(int x, int y) const { return palette_rgb(index(x, y)); }  // 0xRRGGBB of a pixel
    uint32_t palette_rgb(int entry) const;

private:
    struct Destroy {
        void operator()(gdImage *im) const { gdImageDestroy(im); }
    };
    std::unique_ptr<gdImage, Destroy> im_;
};

inline uint32_t rgb(int r, int g, int b) { return (uint32_t)((r << 16) | (g << 8) | b); }

}  // namespace cgi

#endif
