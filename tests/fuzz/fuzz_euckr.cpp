// Fuzz target: EUC-KR text on its way to the picture: euckr2utf with an output of exactly the
// room its contract asks for, the cut at whole characters that the station labels use (which
// must fit 29 bytes in EUC-KR and in UTF-8), and the drawing of the cut text. The text ends at
// the first NUL, as a C string does.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_tree.h"
#include "korean_text.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr std::size_t LABEL_BYTES = 29;

// The UTF-8 form in a buffer of twice the length plus one, zero-filled as the contract asks.
std::string converted(const std::string &euckr)
{
    std::string in = euckr;
    std::vector<char> out(2 * in.size() + 1, '\0');
    euckr2utf(&in[0], out.data());
    return std::string(out.data());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    std::string text((const char *)data, strnlen((const char *)data, size));
    if (converted(text).size() > 2 * text.size()) std::abort();

    std::size_t cut = euckr_whole_prefix(text.c_str(), LABEL_BYTES, LABEL_BYTES);
    std::string label = text.substr(0, cut);
    if (cut > LABEL_BYTES || converted(label).size() > LABEL_BYTES) std::abort();

    gdImagePtr im = gdImageCreate(120, 24);
    gdImageColorAllocate(im, 255, 255, 255);
    draw_euckr(im, label.c_str(), 10.0, 2, 16, gdImageColorAllocate(im, 0, 0, 0));
    gdImageDestroy(im);
    return 0;
}
