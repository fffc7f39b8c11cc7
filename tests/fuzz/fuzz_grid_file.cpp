// Fuzz target: the grid file of 12:05. The first bytes choose the product, the view and how the
// file is written: the rest of the input as it stands (damage to the gzip framing and the deflate
// stream), or the rest as content compressed whole, or compressed and cut. Headers with negative
// sizes end the process by design and those above a million cells only make the run slow: both
// are rows of the end-to-end table and are not run here.
#include <cstdint>
#include <string>

#include "fuzz_tree.h"
#include "grid_stream.h"
#include "rdr_cmp_header.h"
#include "rdr_writers.h"

namespace {

const char *const kProducts[] = {"RNSN", "RNSN1", "RNSN2", "RNEX", "AREA", "TW", "HSR", "RN15X", "RNSN3", "XX"};
const char *const kViews[] = {
    "",
    "&griddisp=1",
    "&gis=T&rnexdisp=2",
    "&zoom_level=1&zoom_x=5000000&zoom_y=5000000",
    "&griddisp=1&zoom_level=2&zoom_rate=3&zoom_x=39&zoom_y=71&rnexdisp=0",
};

enum How { AS_IS, COMPRESSED, CUT };

// The header as the reader decodes it: the same first read of the program's own stream (damaged
// data may give garbage before the damage is seen, and garbage may hold negative sizes).
bool runnable(const std::string &path)
{
    GridStreamPtr s = grid_stream_open(path.c_str(), grid_inflater());
    if (!s) return true;
    unsigned char head[RDR_CMP_HEAD_SIZE] = {0};
    grid_stream_read(s.get(), head, sizeof head);
    RDR_CMP_HEAD h = decode_rdr_cmp_head(head);
    return h.nx >= 0 && h.ny >= 0 && (long)h.nx * h.ny <= 1000000;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(fuzz::ALL_PARTS & ~fuzz::GRIDS);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    fuzz::Choices c(data, size);
    std::string obs = c.pick_of(kProducts);
    std::string view = c.pick_of(kViews);
    int how = c.pick(3);
    int cut = c.pick(256);
    std::string file = how == AS_IS ? c.rest() : fuzz::gzip_bytes(c.rest());
    if (how == CUT) file.resize(file.size() * cut / 256);

    std::string path = fixture::grid_path(fuzz::YY, fuzz::MM, fuzz::DD, fuzz::HH, fuzz::MI);
    fuzz::put_file(path, file);
    if (!runnable(path)) return -1;
    fuzz::run_program(("obs=" + obs + "&tm=" + fuzz::TM + "&size=160" + view).c_str());
    return 0;
}
