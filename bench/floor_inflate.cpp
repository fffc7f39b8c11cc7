// The inflating part of a request's floor: zlib inflates, from the grid file, the header and
// every block up to the end of the last one the product needs, and nothing more. Raw deflate
// after a hand-read gzip header, so no check sum is formed either: the least zlib can do.
// Usage: rdr_bench_inflate FILE PRODUCT; prints the bytes inflated and the milliseconds taken
// (wall clock, then processor time), or exits 1 when the file is not a whole enough gzip grid.
#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstring>
#include <vector>

#include "le_bytes.h"
#include "rdr_cmp_header.h"

namespace {

constexpr std::size_t CHUNK = 1 << 20;

// Where the last block a product needs ends, in blocks of nx x ny bytes after the header.
long long end_in_cells(const char *obs)
{
    if (std::strstr(obs, "RNSN") || std::strcmp(obs, "RNEX") == 0) return 1;  // code block
    if (std::strcmp(obs, "AREA") == 0) return 2;
    if (std::strcmp(obs, "TW") == 0) return 4;
    if (std::strcmp(obs, "HSR") == 0) return 6;    // the code block comes before it
    if (std::strcmp(obs, "RN15X") == 0) return 8;
    return 2;  // values read from the code block's place
}

// Length of the gzip member header at the start of `p`, or 0 when it is not one.
std::size_t gzip_header_length(const unsigned char *p, std::size_t n)
{
    if (n < 10 || p[0] != 0x1f || p[1] != 0x8b || p[2] != 8) return 0;
    int flags = p[3];
    std::size_t at = 10;
    if (flags & 4) {
        if (at + 2 > n) return 0;
        at += 2 + (std::size_t)(p[at] | p[at + 1] << 8);
    }
    for (int bit : {8, 16}) {
        if (!(flags & bit)) continue;
        while (at < n && p[at] != 0) at++;
        at++;
    }
    if (flags & 2) at += 2;
    return at <= n ? at : 0;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: rdr_bench_inflate FILE PRODUCT\n");
        return 2;
    }
    auto start = std::chrono::steady_clock::now();
    std::clock_t cpu_start = std::clock();
    int fd = open(argv[1], O_RDONLY);
    if (fd < 0) return 1;
    std::vector<unsigned char> in(CHUNK), out(CHUNK);
    ssize_t got = read(fd, in.data(), in.size());
    std::size_t skip = got > 0 ? gzip_header_length(in.data(), (std::size_t)got) : 0;
    z_stream z{};
    if (skip == 0 || inflateInit2(&z, -MAX_WBITS) != Z_OK) return 1;
    z.next_in = in.data() + skip;
    z.avail_in = (uInt)(got - (ssize_t)skip);

    long long want = RDR_CMP_HEAD_SIZE, done = 0;
    bool sized = false;
    while (done < want) {
        if (z.avail_in == 0) {
            got = read(fd, in.data(), in.size());
            if (got <= 0) break;
            z.next_in = in.data();
            z.avail_in = (uInt)got;
        }
        // The header lands at the start of the buffer, which the first round never passes.
        long long room = want - done < (long long)CHUNK ? want - done : (long long)CHUNK;
        z.next_out = out.data();
        z.avail_out = (uInt)room;
        int ret = inflate(&z, Z_NO_FLUSH);
        done += room - z.avail_out;
        if (ret != Z_OK) break;
        if (!sized && done == RDR_CMP_HEAD_SIZE) {
            RDR_CMP_HEAD head = decode_rdr_cmp_head(out.data());
            want += end_in_cells(argv[2]) * head.nx * head.ny;
            sized = true;
        }
    }
    inflateEnd(&z);
    close(fd);
    double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    double cpu_ms = 1000.0 * (double)(std::clock() - cpu_start) / CLOCKS_PER_SEC;
    if (done != want) return 1;
    std::printf("%lld %.3f %.3f\n", done, ms, cpu_ms);
    return 0;
}
