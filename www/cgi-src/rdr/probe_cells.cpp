// The cells of a few places; see probe_cells.h.
#include "probe_cells.h"

#include <algorithm>
#include <iterator>

#include "le_bytes.h"
#include "product_table.h"

namespace {

struct Block {
    int start;       // in grid sizes after the header
    int cell_bytes;
};

// The blocks the products read, in file order: classes are bytes, values int16.
std::vector<Block> blocks_of_products()
{
    std::vector<Block> blocks;
    for (int k = 0; k < product_count(); k++) {
        const PRODUCT &p = product_at(k);
        Block b = {p.block, p.kind == ProductKind::Classes ? 1 : 2};
        bool known = std::any_of(blocks.begin(), blocks.end(), [&](const Block &o) { return o.start == b.start; });
        if (!known && b.start >= 0 && b.start + b.cell_bytes <= GRID_SIZES) blocks.push_back(b);
    }
    std::sort(blocks.begin(), blocks.end(), [](const Block &a, const Block &b) { return a.start < b.start; });
    return blocks;
}

}  // namespace

int probe_cells(GridStream *s, const RDR_CMP_HEAD &head, const std::vector<GRID_CELL> &cells,
                std::vector<CELL_RAW> *out)
{
    CELL_RAW none;
    std::fill(std::begin(none.raw), std::end(none.raw), CELL_NOT_GIVEN);
    out->assign(cells.size(), none);
    // The cells inside the grid, row by row.
    std::vector<std::size_t> order;
    for (std::size_t c = 0; c < cells.size(); c++)
        if (cells[c].i >= 0 && cells[c].j >= 0) order.push_back(c);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return cells[a].j < cells[b].j; });

    const long long nx = head.nx, N = nx * head.ny;
    long long at_byte = 0;  // of the stream, after the header
    std::vector<unsigned char> row((std::size_t)(2 * nx));
    for (const Block &b : blocks_of_products()) {
        const long long row_bytes = nx * b.cell_bytes;
        for (std::size_t k = 0; k < order.size();) {
            int j = cells[order[k]].j;
            long long want = b.start * N + j * row_bytes;
            grid_stream_skip(s, (long)(want - at_byte));
            long got = grid_stream_read(s, row.data(), (long)row_bytes);
            at_byte = want + row_bytes;
            for (; k < order.size() && cells[order[k]].j == j; k++) {
                int i = cells[order[k]].i;
                if ((long long)(i + 1) * b.cell_bytes > got) continue;
                (*out)[order[k]].raw[b.start] = b.cell_bytes == 1 ? row[(std::size_t)i] : le_i16(&row[2 * (std::size_t)i]);
            }
            // A short read is the end of the data: nothing more comes.
            if (got < row_bytes) return 0;
        }
    }
    return 0;
}
