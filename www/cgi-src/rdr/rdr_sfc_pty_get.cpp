// The precipitation-type grid file: a gzip stream of a 64-byte header and five blocks of
// nx x ny cells (codes, areas, then wet-bulb temperature, radar rain and station rain as int16).
// rdr_sfc_pty_get loads the one block the product needs into `pty` (classes) or `data`
// (values); it returns 0, or -1 when the file cannot be opened or its header is implausible.
// rdr_sfc_pty_get_all loads every grid the picture needs (0, or error code 2): on the fast road
// in one pass over the file, also for "HSR" and "RN15X" with their classes and values (the
// straightforward build reads the file twice), and only the rows the picture samples.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "canvas.h"
#include "cgiutil.h"
#include "grid_stream.h"
#include "nrutil.h"
#include "rdr_sfc_pty_img.h"

RDR_CMP_HEAD rdr_cmp_head;
float **data;
unsigned char **pty;

namespace {

// A damaged header must not make one request allocate gigabytes.
constexpr long long MAX_CELLS = 64000000;
constexpr float MISSING_VALUE = -999.0f;
// The fast road inflates this many bytes of rows at a time; the straightforward one a row.
constexpr long CHUNK_BYTES = 256 * 1024;

enum class ClassRule { RNSN, RNSN1, RNSN2, RNEX, AREA, None };

ClassRule class_rule()
{
    if (obs_is("RNSN")) return ClassRule::RNSN;
    if (obs_is("RNSN1")) return ClassRule::RNSN1;
    if (obs_is("RNSN2")) return ClassRule::RNSN2;
    if (obs_is("RNEX")) return ClassRule::RNEX;
    if (obs_is("AREA")) return ClassRule::AREA;
    return ClassRule::None;
}

// A code byte holds the station class in its low and the radar class in its high 4 bits.
unsigned char class_of(ClassRule rule, unsigned char b)
{
    int A = b & 0x0f;
    int R = b >> 4;
    switch (rule) {
    case ClassRule::RNSN: return (unsigned char)((A == 0 || (A == 1 && R >= 2)) ? R : A);
    case ClassRule::RNSN1:
        if (A == 0) return (unsigned char)R;
        if (A == 1) return 1;
        return (unsigned char)(R == 0 ? A : R);
    case ClassRule::RNSN2: return (unsigned char)R;
    case ClassRule::RNEX:
        if (A >= 2) return R >= 2 ? 4 : 2;
        if (R >= 2) return 3;
        return R == 1 ? 1 : 0;
    case ClassRule::AREA: return b;
    case ClassRule::None: break;
    }
    return 0;
}

// Where the product's block starts, in bytes after the header: classes from the code block
// ("AREA" from the area block), values from their int16 block (unknown codes from the code block).
long block_offset(long N)
{
    if (obs_is_class_product()) return obs_is("AREA") ? N : 0;
    return obs_is("TW") ? 2 * N : obs_is("HSR") ? 4 * N : obs_is("RN15X") ? 6 * N : 0;
}

// The stream past the header, which is kept in rdr_cmp_head; none when the file does not open or
// its header is implausible.
GridStreamPtr open_grid(int *nx, int *ny)
{
    GridStreamPtr s = grid_stream_open(var.fname, grid_inflater());
    if (!s) return s;
    unsigned char head[RDR_CMP_HEAD_SIZE] = {0};
    grid_stream_read(s.get(), head, sizeof head);
    rdr_cmp_head = decode_rdr_cmp_head(head);
    *nx = rdr_cmp_head.nx;
    *ny = rdr_cmp_head.ny;
    if (*nx > 0 && *ny > 0 && (long long)*nx * *ny > MAX_CELLS) return GridStreamPtr();
    return s;
}

// How each grid was last allocated, for rdr_sfc_pty_release.
struct GridShape {
    bool planned = false;
    int nx = 0, ny = 0;
};
GridShape pty_shape, data_shape;

// The rows of each grid the picture will read; empty: every row.
struct RowPlan {
    std::vector<char> classes;
    std::vector<char> values;
};

// On the fast road the grids hold only the rows the grid layer samples, so a zoomed or small
// picture never touches the rest of a 2305 x 2881 grid (its cells would cost more than inflating
// them). Every other row is one shared missing row: class 0, value -999.0, as cells the stream
// did not give. The straightforward road, and a request without a canvas, read every row.
RowPlan plan_rows(int ny)
{
    RowPlan plan;
    if (STRAIGHTFORWARD || ny <= 0 || !canvas_size_of_request()) return plan;
    plan.classes.assign((std::size_t)ny, 0);
    plan.values.assign((std::size_t)ny, 0);
    if (grid_rows_sampled(plan.classes.data(), plan.values.data()) < 0) return RowPlan();
    return plan;
}

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
    for (int b = 0; b < 256; b++) classes[b] = class_of(rule, (unsigned char)b);
    read_rows(s, ny, nx, rows, [&](int j, const unsigned char *row, long) {
        // A local row pointer: stores through pty[j] could otherwise alias pty itself.
        unsigned char *out = pty[j];
        for (int i = 0; i < nx; i++) out[i] = classes[row[i]];
    });
}

// Cells the stream did not fill are missing.
void read_values(GridStream *s, int nx, int ny, const std::vector<char> &rows)
{
    data = rows.empty() ? matrix(0, ny - 1, 0, nx - 1) : planned_grid<float>(nx, ny, rows, MISSING_VALUE);
    data_shape = {!rows.empty(), nx, ny};
    bool celsius = obs_is("TW");
    read_rows(s, ny, 2L * nx, rows, [&](int j, const unsigned char *row, long arrived) {
        float *out = data[j];
        int cells = (int)(arrived / 2);
        // Two loops rather than a test per cell; the products are formed in double precision.
        if (celsius)
            for (int i = 0; i < cells; i++) out[i] = (float)(le_i16(row + 2 * i) * 0.01 - 200.0);
        else
            for (int i = 0; i < cells; i++) out[i] = (float)(le_i16(row + 2 * i) * 0.01);
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

// One pass over the file for the request's grids: the product's grid and, with `rain_classes`,
// before it the "RNSN" classes of the code block. `planned` reads only the rows the picture
// samples (on the fast road). 0, or -1 when the file cannot be opened or its header is implausible.
int read_grids(bool rain_classes, bool planned)
{
    grid_map_inf(var.map, &var.NX, &var.NY, &var.SX, &var.SY);
    int nx = 0, ny = 0;
    GridStreamPtr s = open_grid(&nx, &ny);
    if (!s) return -1;
    long N = (long)nx * ny;
    RowPlan plan = planned ? plan_rows(ny) : RowPlan();
    if (rain_classes) {
        read_classes(s.get(), ClassRule::RNSN, nx, ny, plan.classes);
        grid_stream_skip(s.get(), block_offset(N) - N);
    } else {
        grid_stream_skip(s.get(), block_offset(N));
    }
    if (obs_is_class_product())
        read_classes(s.get(), class_rule(), nx, ny, plan.classes);
    else
        read_values(s.get(), nx, ny, plan.values);
    return 0;
}

}  // namespace

bool obs_is(const char *code) { return std::strcmp(var.obs, code) == 0; }

bool obs_is_class_product()
{
    return obs_is("RNEX") || std::strstr(var.obs, "RNSN") != nullptr || obs_is("AREA");
}

int rdr_sfc_pty_get() { return read_grids(false, false); }

int rdr_sfc_pty_get_all()
{
    // The rain products also need the rain/snow classes of the same file to mark light rain.
    bool rain = obs_is("HSR") || obs_is("RN15X");
    if (!STRAIGHTFORWARD) return read_grids(rain, true) < 0 ? 2 : 0;

    int err = 0;
    if (rdr_sfc_pty_get() < 0) err = 2;
    if (rain) {
        char obs[8];
        copy_text(obs, sizeof obs, var.obs);
        copy_text(var.obs, sizeof var.obs, "RNSN");
        short nx = rdr_cmp_head.nx, ny = rdr_cmp_head.ny;
        if (rdr_sfc_pty_get() < 0) err = 2;
        // A file replaced between the two reads could leave grids of two shapes; the grid layer
        // indexes both with one header.
        if (rdr_cmp_head.nx != nx || rdr_cmp_head.ny != ny) err = 2;
        copy_text(var.obs, sizeof var.obs, obs);
    }
    return err;
}

void rdr_sfc_pty_release()
{
    release_grid(data, data_shape, free_matrix);
    release_grid(pty, pty_shape, free_cmatrix);
}
