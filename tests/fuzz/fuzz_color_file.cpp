// Fuzz target: the colour files. The first byte chooses a request of a value product, which
// names its colour file; the rest is that file. Its classes reach the palette, the grid layer's
// thresholds and marking, the terrain bands and the legend.
#include <cstdint>
#include <string>

#include "fuzz_tree.h"
#include "rdr_paths.h"
#include "rdr_writers.h"

namespace {

struct Request {
    const char *file;
    const char *query;
};

const Request kRequests[] = {
    {"color_rn_echo.rgb", "obs=HSR&tm=202401151205&size=150"},
    {"color_rn_echo.rgb", "obs=RN15X&tm=202401151205&size=120&griddisp=1&rnexdisp=2&gis=T"},
    {"color_rn_echo.rgb", "obs=HSR&tm=202401151205&size=100&rnexdisp=0&zoom_level=1&zoom_x=44&zoom_y=44"},
    {"color_ta_e30.rgb", "obs=TW&tm=202401151205&size=150&gis=T"},
    {"color_ta_e30.rgb", "obs=TW&tm=202401151205&size=90&griddisp=1&legend=1"},
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(fuzz::CATALOGUE | fuzz::GRIDS | fuzz::TERRAIN);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    fuzz::Choices c(data, size);
    const Request &r = c.pick_of(kRequests);
    fuzz::put_file(fixture::path_of(color_file_path, r.file), c.rest());
    fuzz::run_program(r.query);
    return 0;
}
