#include "picture_table.h"

#include <gdfontl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "picture_compare.h"

namespace table {

namespace {

struct Destroy {
    void operator()(gdImage *im) const { gdImageDestroy(im); }
};
using Image = std::unique_ptr<gdImage, Destroy>;

// A reference drawing on white (entry 0) with one ink (entry 1), compared with the picture over a
// box: ink where the reference has it, `paper` elsewhere (from row `from` on). The first mismatch
// as "x,y", or "".
std::string mismatch(const cgi::Picture &pic, const Image &ref, int x, int y, uint32_t ink, uint32_t paper, int from = 0)
{
    for (int v = 0; v < gdImageSY(ref.get()); v++)
        for (int u = 0; u < gdImageSX(ref.get()); u++) {
            bool inked = gdImageGetPixel(ref.get(), u, v) == 1;
            if (x + u >= pic.width() || y + v >= pic.height() || (v < from && !inked)) continue;
            if (pic.rgb(x + u, y + v) != (inked ? ink : paper)) return std::to_string(x + u) + "," + std::to_string(y + v);
        }
    return "";
}

Image blank(int w, int h)
{
    Image im(gdImageCreate(w, h));
    gdImageColorAllocate(im.get(), 255, 255, 255);
    gdImageColorAllocate(im.get(), 0, 0, 0);
    return im;
}

// The N of "TIME = YYYY.MM.DD.HH:MI / err = N", the 33rd character of the line at (50, 50).
int error_code(const cgi::Picture &pic)
{
    if (pic.width() < 50 + 33 * 8) return 0;  // too narrow to read
    for (char d = '0'; d <= '9'; d++) {
        Image glyph = blank(8, 16);
        gdImageChar(glyph.get(), gdFontGetLarge(), 0, 0, d, 1);
        if (mismatch(pic, glyph, 50 + 32 * 8, 50, kBlack, kErrorGrey).empty()) return d - '0';
    }
    return -1;
}

void check_answer(const Row &row, const cgi::Answer &a)
{
    const Expect &e = row.expect;
    if (e.outcome == Outcome::Exit255 || e.outcome == Outcome::Exit1) {
        EXPECT_EQ(a.exit_status, e.outcome == Outcome::Exit255 ? 255 : 1);
        EXPECT_EQ(a.out, "HTTP/1.0 200 OK\n");
        EXPECT_TRUE(e.outcome == Outcome::Exit255 || a.err.find("allocation failure") != std::string::npos) << a.err;
        return;
    }
    EXPECT_EQ(a.exit_status, 0);
    EXPECT_TRUE(a.err.empty()) << a.err.substr(0, 2000);
    ASSERT_TRUE(a.framed) << a.out.substr(0, 80);
    EXPECT_EQ(a.status_line + "|" + a.content_type, "HTTP/1.0 200 OK|Content-type: image/png");
    cgi::Picture pic(a.png);
    ASSERT_TRUE(pic.ok() && pic.is_palette());
    EXPECT_EQ(e.width ? pic.width() : 0, e.width);
    EXPECT_EQ(e.height ? pic.height() : 0, e.height);
    if (e.outcome == Outcome::ErrorPicture) {
        EXPECT_EQ(pic.colors(), 2);
        EXPECT_EQ(pic.rgb(0, 0), kErrorGrey);
        EXPECT_EQ(e.code ? error_code(pic) : 0, e.code);
    } else {
        EXPECT_EQ(pic.rgb(0, 0), kWhite);  // the title band, and the frame of the map area under it
        EXPECT_EQ(pic.height() > 20 ? pic.rgb(0, 20) : kFrame, kFrame);
    }
    for (const Check &c : row.checks) c(pic);
}

}  // namespace

Check px(int x, int y, uint32_t colour)
{
    return [=](const cgi::Picture &p) { EXPECT_EQ(p.rgb(x, y), colour) << "pixel " << x << "," << y; };
}

Check text(gdFontPtr font, int x, int y, const std::string &s, uint32_t ink, uint32_t paper, int strikes, int from)
{
    return [=](const cgi::Picture &p) {
        Image ref = blank(font->w * (int)s.size() + strikes - 1, font->h);
        for (int k = 0; k < strikes; k++) gdImageString(ref.get(), font, k, 0, (unsigned char *)s.c_str(), 1);
        EXPECT_EQ(mismatch(p, ref, x, y, ink, paper, from), "") << "'" << s << "' at " << x << "," << y;
    };
}

// The pixels of a box (corners inclusive) that `counts` takes number from `least` to `most`.
static Check tally(int x0, int y0, int x1, int y1, std::function<bool(uint32_t)> counts, int least, int most, const char *what)
{
    return [=](const cgi::Picture &p) {
        int n = 0;
        for (int y = y0; y <= y1; y++)
            for (int x = x0; x <= x1; x++) n += counts(p.rgb(x, y));
        EXPECT_TRUE(n >= least && n <= most) << n << what << x0 << "," << y0 << ".." << x1 << "," << y1;
    };
}

Check count(int x0, int y0, int x1, int y1, uint32_t colour, int least, int most)
{
    return tally(x0, y0, x1, y1, [=](uint32_t c) { return c == colour; }, least, most, " of the colour in ");
}

Check ink(int x0, int y0, int x1, int y1, uint32_t paper, int least, int most, uint32_t also)
{
    return tally(x0, y0, x1, y1, [=](uint32_t c) { return c != paper && c != also; }, least, most, " inked in ");
}

Check distinct(int least)
{
    return [=](const cgi::Picture &p) {
        std::vector<bool> used(256);
        for (int y = 21; y < p.height(); y++)
            for (int x = 0; x < p.width(); x++) used[(std::size_t)p.index(x, y) & 255] = true;
        EXPECT_GE(std::count(used.begin(), used.end(), true), least);
    };
}

Check palette(int entry, uint32_t colour)
{
    return [=](const cgi::Picture &p) { EXPECT_EQ(p.palette_rgb(entry), colour) << "entry " << entry; };
}

Check colours(int entries)
{
    return [=](const cgi::Picture &p) { EXPECT_EQ(p.colors(), entries); };
}

Check disc(int X, int Y, uint32_t centre)
{
    return [=](const cgi::Picture &p) {
        uint32_t rim = centre == kBackground ? kBackground : kDisc;
        for (int dx : {-2, 0, 2}) EXPECT_EQ(p.rgb(X + dx, Y), centre) << "disc at " << X << "," << Y;
        for (int d : {-4, 4}) {
            EXPECT_EQ(p.rgb(X + d, Y), rim) << "disc at " << X << "," << Y;
            EXPECT_EQ(p.rgb(X, Y + d), rim) << "disc at " << X << "," << Y;
        }
        EXPECT_EQ(p.rgb(X + 5, Y), kBackground) << "disc at " << X << "," << Y;
    };
}

Check section(int x1, int y1, int x2, int y2)
{
    return [=](const cgi::Picture &p) {
        Image ref = blank(p.width(), p.height());
        gdImageLine(ref.get(), x1, y1, x2, y2, 1);
        gdImageLine(ref.get(), x1, y1 - 1, x2, y2 - 1, 1);
        gdImageFilledArc(ref.get(), x1, y1, 5, 5, 0, 360, 1, gdArc);
        gdImageFilledArc(ref.get(), x2, y2, 5, 5, 0, 360, 1, gdArc);
        for (int y = 0; y < p.height(); y++)
            for (int x = 0; x < p.width(); x++)
                if ((p.rgb(x, y) == kPink) != (gdImageGetPixel(ref.get(), x, y) == 1)) {
                    ADD_FAILURE() << "section pixel " << x << "," << y;
                    return;
                }
    };
}

Check error_lines(const std::vector<std::pair<int, std::string>> &lines)
{
    return [=](const cgi::Picture &p) {
        Image ref = blank(p.width(), p.height());
        for (const auto &l : lines)
            gdImageString(ref.get(), gdFontGetLarge(), 50, l.first, (unsigned char *)l.second.c_str(), 1);
        EXPECT_EQ(mismatch(p, ref, 0, 0, kBlack, kErrorGrey), "");
    };
}

void run_rows(const std::vector<Row> &rows, bool against_plain)
{
    void (*written)() = nullptr;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what + " [" + row.query.substr(0, 120) + "]");
        if (row.tree != written || row.damage) {
            row.tree();
            written = row.damage ? nullptr : row.tree;
        }
        if (row.damage) row.damage();
        cgi::Answer a = cgi::run(row.query.c_str(), row.limit_ms);
        ASSERT_FALSE(a.timed_out);
        check_answer(row, a);
        if (!against_plain) continue;
        cgi::Answer plain = cgi::run(row.query.c_str(), row.limit_ms, "UTC0", RDR_PROGRAM_PLAIN);
        std::string diff = cgi::picture_difference(plain.png, a.png);
        EXPECT_EQ(plain.exit_status, a.exit_status);
        EXPECT_TRUE(diff.empty() || (row.pixels_may_differ && diff.rfind("pixel", 0) == 0) || (!a.framed && !plain.framed))
            << "the straightforward build differs: " << diff;
    }
}

}  // namespace table
