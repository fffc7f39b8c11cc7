// Whether two PNG pictures show the same thing: the same size, the same palette and the same
// palette entry in every pixel. Their bytes may differ (another compression level). Shared by the
// tests and the benchmark; returns an empty text when the pictures match, else the first difference.
#ifndef PICTURE_COMPARE_H
#define PICTURE_COMPARE_H

#include <gd.h>

#include <memory>
#include <string>

namespace cgi {

inline std::string picture_difference(const std::string &png_a, const std::string &png_b)
{
    struct Destroy {
        void operator()(gdImage *im) const { gdImageDestroy(im); }
    };
    using Image = std::unique_ptr<gdImage, Destroy>;
    auto decode = [](const std::string &png) {
        return Image(png.empty() ? nullptr : gdImageCreateFromPngPtr((int)png.size(), const_cast<char *>(png.data())));
    };
    Image a = decode(png_a), b = decode(png_b);
    if (!a || !b) return "a picture does not decode";
    if (gdImageTrueColor(a.get()) || gdImageTrueColor(b.get())) return "not a palette picture";
    if (gdImageSX(a.get()) != gdImageSX(b.get()) || gdImageSY(a.get()) != gdImageSY(b.get()) ||
        gdImageColorsTotal(a.get()) != gdImageColorsTotal(b.get()) || gdImageGetTransparent(a.get()) != gdImageGetTransparent(b.get()))
        return "sizes, palette lengths or transparent entries differ";
    for (int k = 0; k < gdImageColorsTotal(a.get()); k++)
        if (gdImageRed(a.get(), k) != gdImageRed(b.get(), k) || gdImageGreen(a.get(), k) != gdImageGreen(b.get(), k) ||
            gdImageBlue(a.get(), k) != gdImageBlue(b.get(), k) || gdImageAlpha(a.get(), k) != gdImageAlpha(b.get(), k))
            return "palette entry " + std::to_string(k) + " differs";
    for (int y = 0; y < gdImageSY(a.get()); y++)
        for (int x = 0; x < gdImageSX(a.get()); x++)
            if (gdImagePalettePixel(a.get(), x, y) != gdImagePalettePixel(b.get(), x, y))
                return "pixel " + std::to_string(x) + "," + std::to_string(y) + " differs";
    return "";
}

}  // namespace cgi

#endif
