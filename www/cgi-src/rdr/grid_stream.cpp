// The grid file as a forward stream, inflated by zlib or by ISA-L's igzip. Both give the bytes
// of the file's gzip members in order (or the file as it stands when it lacks the gzip magic);
// where ISA-L stops early (a file that ends inside a member, broken data) zlib reads on from there.
#include "grid_stream.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#ifdef RDR_WITH_ISAL
#include <isa-l/igzip_lib.h>
#endif

#include "straightforward.h"

namespace {

// zlib reads the file through a buffer of this size (its own default is 8 KiB).
constexpr unsigned ZLIB_BUFFER = 128 * 1024;

#ifdef RDR_WITH_ISAL
constexpr std::size_t ISAL_INPUT = 256 * 1024;
constexpr std::size_t SKIP_BUFFER = 64 * 1024;

// Where the stream stands: before a member (or the start), inside a member, or copying a file
// that is not compressed.
enum class Stage { Look, Inflate, Copy };

struct IsalStream {
    int fd = -1;
    bool eof = false;    // the file has nothing more to give
    bool ended = false;  // the data ended or broke: nothing more comes
    bool first = true;   // no gzip member seen yet
    bool gave_up = false;  // the file ended inside a member, or its data broke
    Stage stage = Stage::Look;
    std::vector<unsigned char> in = std::vector<unsigned char>(ISAL_INPUT);
    inflate_state st;

    ~IsalStream()
    {
        if (fd >= 0) close(fd);
    }
};

// At least `least` bytes of input at hand, unless the file ends first.
void fill(IsalStream &s, uint32_t least)
{
    while (s.st.avail_in < least && !s.eof) {
        if (s.st.avail_in > 0) std::memmove(s.in.data(), s.st.next_in, s.st.avail_in);
        s.st.next_in = s.in.data();
        ssize_t n = read(s.fd, s.in.data() + s.st.avail_in, s.in.size() - s.st.avail_in);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) s.eof = true;
        else s.st.avail_in += (uint32_t)n;
    }
}

// Before a member: another member, the uncompressed file, or the end (trailing bytes are ignored).
void look(IsalStream &s)
{
    fill(s, 2);
    const unsigned char *p = s.st.next_in;
    if (s.st.avail_in >= 2 && p[0] == 0x1f && p[1] == 0x8b) {
        uint32_t avail = s.st.avail_in;
        isal_inflate_reset(&s.st);
        s.st.next_in = const_cast<unsigned char *>(p);
        s.st.avail_in = avail;
        s.st.crc_flag = ISAL_GZIP;
        s.stage = Stage::Inflate;
    } else if (s.first && s.st.avail_in > 0) {
        s.stage = Stage::Copy;
    } else {
        s.ended = true;
    }
    s.first = false;
}

long isal_read(IsalStream &s, unsigned char *buf, long n)
{
    long got = 0;
    while (got < n && !s.ended) {
        if (s.stage == Stage::Look) {
            look(s);
            continue;
        }
        fill(s, 1);
        if (s.st.avail_in == 0 && s.stage == Stage::Copy) {
            s.ended = true;
            break;
        }
        uint32_t room = (uint32_t)std::min<long>(n - got, UINT32_MAX);
        if (s.stage == Stage::Copy) {
            uint32_t k = std::min(room, s.st.avail_in);
            std::memcpy(buf + got, s.st.next_in, k);
            s.st.next_in += k;
            s.st.avail_in -= k;
            got += k;
            continue;
        }
        uint32_t before_in = s.st.avail_in;
        s.st.next_out = buf + got;
        s.st.avail_out = room;
        int ret = isal_inflate(&s.st);
        uint32_t produced = room - s.st.avail_out;
        got += produced;
        bool cut = produced == 0 && s.st.avail_in == before_in && s.eof;
        if (ret != ISAL_DECOMP_OK || cut) s.ended = s.gave_up = true;
        else if (s.st.block_state == ISAL_BLOCK_FINISH) s.stage = Stage::Look;
    }
    return got;
}

#endif

}  // namespace

struct GridStream {
    Inflater inflater = Inflater::Zlib;
    gzFile gz = nullptr;
#ifdef RDR_WITH_ISAL
    std::unique_ptr<IsalStream> isal;
    std::string path;
    long delivered = 0;
    std::vector<unsigned char> skipped;
#endif
};

namespace {

gzFile open_zlib(const char *path)
{
    gzFile gz = gzopen(path, "rb");
    if (gz) gzbuffer(gz, ZLIB_BUFFER);
    return gz;
}

}  // namespace

bool grid_has_isal()
{
#ifdef RDR_WITH_ISAL
    return true;
#else
    return false;
#endif
}

Inflater grid_inflater() { return grid_has_isal() && !STRAIGHTFORWARD ? Inflater::Isal : Inflater::Zlib; }

void GridStreamCloser::operator()(GridStream *s) const
{
    if (s->gz) gzclose(s->gz);
    delete s;
}

GridStreamPtr grid_stream_open(const char *path, Inflater inflater)
{
    GridStreamPtr s(new GridStream);
    s->inflater = inflater;
#ifdef RDR_WITH_ISAL
    if (inflater == Inflater::Isal) {
        s->isal = std::make_unique<IsalStream>();
        s->isal->fd = open(path, O_RDONLY | O_CLOEXEC);
        if (s->isal->fd < 0) return GridStreamPtr();
        s->path = path;
        isal_inflate_init(&s->isal->st);
        return s;
    }
#endif
    s->inflater = Inflater::Zlib;
    s->gz = open_zlib(path);
    if (!s->gz) return GridStreamPtr();
    return s;
}

long grid_stream_read(GridStream *s, void *buf, long n)
{
    if (n <= 0) return 0;
#ifdef RDR_WITH_ISAL
    if (s->inflater == Inflater::Isal) {
        long got = isal_read(*s->isal, (unsigned char *)buf, n);
        s->delivered += got;
        if (!s->isal->gave_up) return got;
        // The file ends inside a member (it may still be being written) or its data broke. From
        // the last bits of a cut file zlib can get a byte more than ISA-L does, and where data
        // break the two may stop at different places: zlib, the reference, reads on from here.
        s->inflater = Inflater::Zlib;
        s->gz = open_zlib(s->path.c_str());
        if (!s->gz || gzseek(s->gz, s->delivered, SEEK_SET) < 0) return got;
        return got + grid_stream_read(s, (unsigned char *)buf + got, n - got);
    }
#endif
    // A damaged stream counts as nothing read.
    int got = gzread(s->gz, buf, (unsigned)std::min<long>(n, INT_MAX));
    return got < 0 ? 0 : got;
}

void grid_stream_skip(GridStream *s, long n)
{
    if (n <= 0) return;
#ifdef RDR_WITH_ISAL
    // Inflated into a scratch buffer; should zlib take over on the way, it skips the rest.
    while (n > 0 && s->inflater == Inflater::Isal) {
        if (s->skipped.empty()) s->skipped.resize(SKIP_BUFFER);
        long want = std::min<long>(n, (long)s->skipped.size());
        long got = grid_stream_read(s, s->skipped.data(), want);
        n -= got;
        if (got < want && s->inflater == Inflater::Isal) return;
    }
    if (n <= 0) return;
#endif
    gzseek(s->gz, n, SEEK_CUR);
}
