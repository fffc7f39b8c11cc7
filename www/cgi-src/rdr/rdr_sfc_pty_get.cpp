// The grid file reader; see rdr_sfc_pty_get.h. The whole road reads every row of one block per
// call; the one-pass road inflates the file once, also for a rain product's values and marking
// classes, and keeps only the planned rows as cells of their own.
#include "rdr_sfc_pty_get.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "grid_map_inf.h"
#include "le_bytes.h"
#include "nrutil.h"
#include "straightforward.h"
#include "user_input.h"

RDR_CMP_HEAD rdr_cmp_head;
float **data;
unsigned char **pty;

namespace {

// A damaged header must not make one request allocate gigabytes.
constexpr long long MAX_CELLS = 64000000;
constexpr float MISSING_VALUE = -999.0f;
// The fast road inflates this many bytes of rows at a time; the straightforward one a row.
constexpr long CHUNK_BYTES = 256 * 1024;

// Looks the map up and opens the file past its header, which is kept in rdr_cmp_head.
int open_grid(GRID_FILE *file)
{
    if (grid_map_inf(var.map, &var.NX, &var.NY, &var.SX, &var.SY) < 0) return GRID_NO_CATALOGUE;
    file->stream = grid_stream_open(var.fname, grid_inflater());
    if (!file->stream) return GRID_NOT_READ;
    unsigned char head[RDR_CMP_HEAD_SIZE] = {0};
    grid_stream_read(file->stream.get(), head, sizeof head);
    rdr_cmp_head = decode_rdr_cmp_head(head);
    long long nx = rdr_cmp_head.nx, ny = rdr_cmp_head.ny;
    if (nx > 0 && ny > 0 && nx * ny > MAX_CELLS) {
        file->stream.reset();
        return GRID_NOT_READ;
    }
    return 0;
}

// How each grid was last allocated, for rdr_sfc_pty_release.
struct GridShape {
    bool planned = false;
    int nx = 0, ny = 0;
};
GridShape pty_shape, data_shape;

// A grid of ny rows of nx cells in which only the planned rows have cells of their own, left
// for the reader to fill; never released, like every grid.
template <typename T>
T **planned_grid(int nx, int ny, const std::vector<char> &rows, T missing)
{
    std::size_t planned = (std::size_t)std::count(rows.begin(), rows.end(), 1);
    T **grid = static_cast<T **>(std::malloc((std::size_t)ny * sizeof(T *)));
    T *cells = static_cast<T *>(std::malloc((planned + 1) * (std::size_t)nx * sizeof(T)));
    if (!grid || !cells) nrerror("allocation failure of a grid");
    T *missing_row = cells + planned * (std::size_t)nx;
    std::fill(missing_row, missing_row + nx, missing);
    for (int j = 0; j < ny; j++) {
        grid[j] = rows[(std::size_t)j] ? cells : missing_row;
        if (rows[(std::size_t)j]) cells += nx;
    }
    return grid;
}

// Hands the planned rows of the block at the stream's position to `take(j, bytes, arrived)`,
// several rows per read on the fast road; the block is inflated whole all the same. Bytes the
// stream did not give are zero; `arrived` counts those it did.
template <typename Take>
void read_rows(GridStream *s, int ny, long row_bytes, const std::vector<char> &rows, Take take)
{
    long rows_per_read = STRAIGHTFORWARD || row_bytes <= 0 ? 1 : std::max(1L, CHUNK_BYTES / row_bytes);
    std::vector<unsigned char> buf((std::size_t)(rows_per_read * std::max(row_bytes, 1L)));
    for (int j = 0; j < ny; j += (int)rows_per_read) {
        long count = std::min<long>(rows_per_read, ny - j);
        long got = grid_stream_read(s, buf.data(), count * row_bytes);
        std::memset(buf.data() + got, 0, (std::size_t)(count * row_bytes - got));
        for (long r = 0; r < count; r++) {
            if (!rows.empty() && !rows[(std::size_t)(j + r)]) continue;
            take(j + (int)r, buf.data() + r * row_bytes, std::clamp(got - r * row_bytes, 0L, row_bytes));
        }
    }
}

// Cells the stream did not fill stay class 0, which every rule maps from a zero byte.
void read_classes(GridStream *s, ClassRule rule, int nx, int ny, const std::vector<char> &rows)
{
    pty = rows.empty() ? cmatrix(0, ny - 1, 0, nx - 1) : planned_grid<unsigned char>(nx, ny, rows, 0);
    pty_shape = {!rows.empty(), nx, ny};
    unsigned char classes[256];
    for (int b = 0; b < 256; b++) classes[b] = class_of_code(rule, (unsigned char)b);
    read_rows(s, ny, nx, rows, [&](int j, const unsigned char *row, long) {
        // A local row pointer: stores through pty[j] could otherwise alias pty itself.
        unsigned char *out = pty[j];
        for (int i = 0; i < nx; i++) out[i] = classes[row[i]];
    });
}

// Cells the stream did not fill are missing. The values are formed in double precision.
void read_values(GridStream *s, int nx, int ny, const std::vector<char> &rows)
{
    data = rows.empty() ? matrix(0, ny - 1, 0, nx - 1) : planned_grid<float>(nx, ny, rows, MISSING_VALUE);
    data_shape = {!rows.empty(), nx, ny};
    double offset = product->value_offset;
    read_rows(s, ny, 2L * nx, rows, [&](int j, const unsigned char *row, long arrived) {
        float *out = data[j];
        int cells = (int)(arrived / 2);
        for (int i = 0; i < cells; i++) out[i] = scaled_value(le_i16(row + 2 * i), offset);
        std::fill(out + cells, out + nx, MISSING_VALUE);
    });
}

template <typename T>
void release_grid(T **&grid, const GridShape &shape, void (*free_rows)(T **, int, int, int, int))
{
    if (!grid) return;
    if (shape.planned) {
        // The rows lie in one block of cells, which starts at the lowest row.
        std::free(*std::min_element(grid, grid + shape.ny));
        std::free(grid);
    } else {
        free_rows(grid, 0, shape.ny - 1, 0, shape.nx - 1);
    }
    grid = nullptr;
}

// The request's grids from the stream's position after the header: with `marking`, first the
// marking classes of the code block, then the product's block. Only the rows `plan` marks, when
// it was made for this header.
int read_blocks(GridStream *s, bool marking, const ROW_PLAN &given)
{
    int nx = rdr_cmp_head.nx, ny = rdr_cmp_head.ny;
    bool fits = ny > 0 && given.classes.size() == (std::size_t)ny && given.values.size() == (std::size_t)ny;
    static const ROW_PLAN every_row;
    const ROW_PLAN &plan = fits ? given : every_row;
    long N = (long)nx * ny;
    long skip = product->block * N;
    if (marking) {
        read_classes(s, product->marking, nx, ny, plan.classes);
        skip -= N;
    }
    grid_stream_skip(s, skip);
    if (product->kind == ProductKind::Classes)
        read_classes(s, product->rule, nx, ny, plan.classes);
    else
        read_values(s, nx, ny, plan.values);
    return 0;
}

}  // namespace

int rdr_sfc_pty_get()
{
    GRID_FILE file;
    int got = open_grid(&file);
    return got < 0 ? got : read_blocks(file.stream.get(), false, ROW_PLAN());
}

int rdr_sfc_pty_get_marking()
{
    RDR_CMP_HEAD before = rdr_cmp_head;
    GRID_FILE file;
    int got = open_grid(&file);
    if (got < 0) return got;
    read_classes(file.stream.get(), product->marking, rdr_cmp_head.nx, rdr_cmp_head.ny, {});
    // A file replaced between the two reads could leave grids of two shapes; the grid layer
    // indexes both with one header.
    return rdr_cmp_head.nx == before.nx && rdr_cmp_head.ny == before.ny ? 0 : GRID_NOT_READ;
}

int rdr_sfc_pty_open(GRID_FILE *file) { return open_grid(file); }

int rdr_sfc_pty_read(GRID_FILE *file, const ROW_PLAN &plan)
{
    if (!file->stream) return GRID_NOT_READ;
    return read_blocks(file->stream.get(), product->marking != ClassRule::None, plan);
}

void rdr_sfc_pty_release()
{
    release_grid(data, data_shape, free_matrix);
    release_grid(pty, pty_shape, free_cmatrix);
}
