// Fuzz target: the map catalogue. The first byte chooses a request (products, maps, zoom,
// stations, terrain and the cross-section line); the rest is the catalogue, whose extents and
// origins reach the canvas and every layer.
#include <cstdint>
#include <string>

#include "fuzz_tree.h"
#include "rdr_paths.h"
#include "rdr_writers.h"

namespace {

const char *const kQueries[] = {
    "obs=RNSN&tm=202401151205&size=200",
    "obs=TW&tm=202401151205&size=150&gis=T&zoom_level=2&zoom_x=3000000&zoom_y=4000000",
    "obs=HSR&tm=202401151205&size=120&aws=8&zoom_level=3&zoom_x=2200000&zoom_y=2200000&x1=10&y1=20&x2=90&y2=100",
    "obs=RNEX&tm=202401151205&size=100&map=SR&legend=0",
    "obs=AREA&tm=202401151205&size=100&map=A/B&aws=1&zoom_level=1",
    "obs=RN15X&tm=202401151205&size=100&map=hr&griddisp=1",
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(fuzz::ALL_PARTS & ~fuzz::CATALOGUE);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    fuzz::Choices c(data, size);
    const char *query = c.pick_of(kQueries);
    fuzz::put_file(fixture::path_of(map_catalogue_path), c.rest());
    fuzz::run_program(query);
    return 0;
}
