// Fuzz target: the map outline files. The first bytes choose the kind of outline the input
// becomes (the other kind is missing) and the view; the rest is the file.
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz_tree.h"
#include "rdr_paths.h"
#include "rdr_writers.h"

namespace {

// Kind 1 is drawn from zoom level 2 on; pictures above 450 and 600 pixels draw lines double.
const char *const kQueries[] = {
    "obs=RNSN&tm=202401151205&size=200&zoom_level=2",
    "obs=RNSN&tm=202401151205&size=601&legend=0&zoom_level=3&zoom_x=5500000&zoom_y=5500000",
    "obs=RNSN&tm=202401151205&size=460&zoom_level=2&zoom_rate=3&zoom_x=99&zoom_y=11",
    "obs=RNEX&tm=202401151205&size=100&zoom_level=1&zoom_x=8800000&zoom_y=1200000",
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(fuzz::CATALOGUE | fuzz::GRIDS);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    fuzz::Choices c(data, size);
    int kind = c.pick(2) == 0 ? 4 : 1;
    const char *query = c.pick_of(kQueries);
    std::remove(fixture::path_of(outline_file_path, "HR", 5 - kind).c_str());
    fuzz::put_file(fixture::path_of(outline_file_path, "HR", kind), c.rest());
    fuzz::run_program(query);
    return 0;
}
