// The precipitation-type grid file: a gzip stream of a 64-byte header and five blocks of
// nx x ny cells (codes, areas, then wet-bulb temperature, radar rain and station rain as int16).
// rdr_sfc_pty_get loads the one block the product needs into `pty` (classes) or `data`
// (values); it returns 0, or -1 when the file cannot be opened or its header is implausible.
#include <zlib.h>

#include <cstring>
#include <memory>

#include "cgiutil.h"
#include "nrutil.h"
#include "rdr_sfc_pty_img.h"

RDR_CMP_HEAD rdr_cmp_head;
float **data;
unsigned char **pty;

namespace {

// A damaged header must not make one request allocate gigabytes.
constexpr long long MAX_CELLS = 64000000;
constexpr float MISSING_VALUE = -999.0f;

struct GzCloser {
    void operator()(gzFile_s *f) const { gzclose(f); }
};
using GzFile = std::unique_ptr<gzFile_s, GzCloser>;

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

// Bytes that arrived; a damaged stream counts as nothing read.
long read_bytes(gzFile f, void *buf, long n)
{
    int got = gzread(f, buf, (unsigned)n);
    return got < 0 ? 0 : got;
}

// Cells the stream did not fill stay class 0, which every rule maps from a zero byte.
void read_classes(gzFile f, int nx, int ny, int N)
{
    pty = cmatrix(0, ny - 1, 0, nx - 1);
    unsigned char *row = (unsigned char *)cvector(0, nx - 1);
    ClassRule rule = class_rule();
    if (rule == ClassRule::AREA) gzseek(f, N, SEEK_CUR);
    for (int j = 0; j < ny; j++) {
        std::memset(row, 0, (std::size_t)nx);
        read_bytes(f, row, nx);
        for (int i = 0; i < nx; i++) pty[j][i] = class_of(rule, row[i]);
    }
    free_cvector((char *)row, 0, nx - 1);
}

// Cells the stream did not fill are missing.
void read_values(gzFile f, int nx, int ny, int N)
{
    data = matrix(0, ny - 1, 0, nx - 1);
    unsigned char *row = (unsigned char *)svector(0, nx - 1);
    bool tw = obs_is("TW");
    long skip = tw ? 2L * N : obs_is("HSR") ? 4L * N : obs_is("RN15X") ? 6L * N : 0;
    if (skip > 0) gzseek(f, skip, SEEK_CUR);
    for (int j = 0; j < ny; j++) {
        long cells = read_bytes(f, row, 2L * nx) / 2;
        for (int i = 0; i < nx; i++) {
            if (i >= cells) {
                data[j][i] = MISSING_VALUE;
                continue;
            }
            double v = le_i16(row + 2 * i);
            data[j][i] = tw ? (float)(v * 0.01 - 200.0) : (float)(v * 0.01);
        }
    }
    free_svector((short *)row, 0, nx - 1);
}

}  // namespace

bool obs_is(const char *code) { return std::strcmp(var.obs, code) == 0; }

bool obs_is_class_product()
{
    return obs_is("RNEX") || std::strstr(var.obs, "RNSN") != nullptr || obs_is("AREA");
}

int rdr_sfc_pty_get()
{
    grid_map_inf(var.map, &var.NX, &var.NY, &var.SX, &var.SY);

    GzFile f(gzopen(var.fname, "rb"));
    if (!f) return -1;

    unsigned char head[RDR_CMP_HEAD_SIZE] = {0};
    read_bytes(f.get(), head, sizeof head);
    rdr_cmp_head = decode_rdr_cmp_head(head);

    int nx = rdr_cmp_head.nx;
    int ny = rdr_cmp_head.ny;
    if (nx > 0 && ny > 0 && (long long)nx * ny > MAX_CELLS) return -1;
    int N = nx * ny;

    if (obs_is_class_product())
        read_classes(f.get(), nx, ny, N);
    else
        read_values(f.get(), nx, ny, N);
    return 0;
}

int rdr_sfc_pty_get_all()
{
    int err = 0;
    if (rdr_sfc_pty_get() < 0) err = 2;
    // The rain products also need the rain/snow classes of the same file to mark light rain.
    if (obs_is("HSR") || obs_is("RN15X")) {
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
