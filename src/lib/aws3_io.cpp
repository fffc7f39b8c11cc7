// The hourly AWS minute data and QC files. Each accessor keeps the file of its last hour open,
// so the reads of one hour cost one open. A pass over many stations reads them in slot order, so
// a read fetches the 64 KiB of the file around its record and the pass's next reads come from
// there: some 75 reads for a picture's 15 minutes of 700 stations instead of 21000. A read that
// goes back, a write or another file fetches afresh, so no pass sees data older than its own
// start. Results are the AWS3_* codes of aws3_io.h.
#include "aws3_io.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <vector>

#include "file_ptr.h"
#include "rdr_paths.h"

FILE *fp_log = nullptr;

namespace {

using HourPathComposer = int (*)(char *, std::size_t, int, int, int, int);

struct HourFileKind {
    const char *tag;  // the prefix of the messages
    HourPathComposer compose;
    long long record_size;
    long long block_size;
    bool whole_minute;  // a negative station number addresses the whole minute block
};

const HourFileKind kDataFile = {"AWS3 DATA", aws3_min_path, sizeof(AWS3_DATA), AWS3_DATA_BLOCK, true};
const HourFileKind kQcdFile = {"AWS3 QCD", aws3_qcd_path, sizeof(struct AWS3_QCD), AWS3_QCD_BLOCK, false};

struct Hour {
    int YY, MM, DD, HH;
};

bool same_hour(const Hour &a, const Hour &b)
{
    return a.YY == b.YY && a.MM == b.MM && a.DD == b.DD && a.HH == b.HH;
}

constexpr long long WINDOW_BYTES = 64 * 1024;
constexpr long long PAGE_BYTES = 4096;

// Bytes of the open file fetched at once; `last` is where the pass's latest read began.
struct Window {
    std::vector<unsigned char> bytes;
    long long at = 0;
    long long len = 0;
    long long last = -1;
};

// The cache of one accessor. Once asked to write, it opens read-write for the rest of the process.
struct HourFile {
    FilePtr fp;
    Hour hour{};
    char name[RDR_PATH_CAP] = "";
    char rw = 'r';
    Window window;
};

HourFile data_file;
HourFile qcd_file;

__attribute__((format(printf, 1, 2))) void log_message(const char *fmt, ...)
{
    if (!fp_log) return;
    va_list ap;
    va_start(ap, fmt);
    std::vfprintf(fp_log, fmt, ap);
    va_end(ap);
}

int open_hour(HourFile &f, const HourFileKind &kind, const Hour &h, char mode)
{
    if (f.fp && same_hour(f.hour, h) && (f.rw == 'w' || mode != 'w')) return AWS3_OK;
    f.fp.reset();
    f.window = Window();
    if (mode == 'w') f.rw = 'w';
    int composed = kind.compose(f.name, sizeof f.name, h.YY, h.MM, h.DD, h.HH);
    f.fp = open_file(composed, f.name, f.rw == 'w' ? "rb+" : "rb");
    if (!f.fp) {
        log_message("#[ %s ] File not opened (%s)\n", kind.tag, f.name);
        return AWS3_NOT_OPENED;
    }
    f.hour = h;
    return AWS3_OK;
}

long long write_at(int fd, const unsigned char *buf, long long bytes, long long offset)
{
    long long done = 0;
    while (done < bytes) {
        ssize_t n = pwrite(fd, buf + done, (std::size_t)(bytes - done), (off_t)(offset + done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += n;
    }
    return done;
}

// One record of a pass, from the window when the pass moves forward inside it.
long long read_record(int fd, Window &w, unsigned char *buf, long long bytes, long long offset)
{
    bool inside = offset >= w.last && offset >= w.at && offset + bytes <= w.at + w.len;
    if (!inside) {
        w.bytes.resize((std::size_t)WINDOW_BYTES);
        w.at = offset - offset % PAGE_BYTES;
        w.len = read_at(fd, w.bytes.data(), WINDOW_BYTES, w.at);
    }
    w.last = offset;
    long long have = std::clamp(w.at + w.len - offset, 0LL, bytes);
    std::memcpy(buf, w.bytes.data() + (offset - w.at), (std::size_t)have);
    return have;
}

// Bytes moved between the buffer and the file at `offset`; fewer than asked at the file's end.
long long transfer(HourFile &f, char mode, unsigned char *buf, long long bytes, long long offset)
{
    int fd = fileno(f.fp.get());
    if (mode == 'w') {
        f.window = Window();
        return write_at(fd, buf, bytes, offset);
    }
    // A whole minute block is one read of its own.
    if (bytes > WINDOW_BYTES - PAGE_BYTES) return read_at(fd, buf, bytes, offset);
    return read_record(fd, f.window, buf, bytes, offset);
}

int hour_file_io(HourFile &f, const HourFileKind &kind, const Hour &h, int MI, int aws_id, void *buf,
                 char mode)
{
    if (mode == 'c') {
        f.fp.reset();
        return AWS3_OK;
    }
    if (mode != 'r' && mode != 'w') return AWS3_NOT_OPENED;
    if (aws_id >= AWS3_STN_SLOTS || (aws_id < 0 && !kind.whole_minute)) return AWS3_BAD_STATION;
    if (open_hour(f, kind, h, mode) != AWS3_OK) return AWS3_NOT_OPENED;

    long long count = aws_id < 0 ? AWS3_STN_SLOTS : 1;
    long long offset = (long long)MI * kind.block_size + (aws_id < 0 ? 0 : aws_id * kind.record_size);
    if (offset < 0) {
        log_message("#[ %s ] fseek error (%s,%lld)\n", kind.tag, f.name, offset);
        return AWS3_SEEK_FAILED;
    }
    long long bytes = transfer(f, mode, (unsigned char *)buf, count * kind.record_size, offset);
    if (bytes / kind.record_size != count) {
        log_message("#[ %s ] IO error (%c,%04d%02d%02d%02d%02d_%d)\n", kind.tag, mode, h.YY, h.MM, h.DD,
                    h.HH, MI, aws_id);
        return AWS3_SHORT_IO;
    }
    return AWS3_OK;
}

}  // namespace

int AWS3_DATA_IO(int YY, int MM, int DD, int HH, int MI, int aws_id, AWS3_DATA *aws, char mode)
{
    return hour_file_io(data_file, kDataFile, Hour{YY, MM, DD, HH}, MI, aws_id, aws, mode);
}

int AWS3_QCD_IO(int YY, int MM, int DD, int HH, int MI, int aws_id, struct AWS3_QCD *qcd, char mode)
{
    return hour_file_io(qcd_file, kQcdFile, Hour{YY, MM, DD, HH}, MI, aws_id, qcd, mode);
}

int AWS3_DATA_READ(int YY, int MM, int DD, int HH, int MI, int aws_id, AWS3_DATA *aws, char)
{
    if (aws_id < 0 || aws_id >= AWS3_STN_SLOTS) return -1;
    if (AWS3_DATA_IO(YY, MM, DD, HH, MI, aws_id, aws, 'r') < 0) return -1;
    struct AWS3_QCD qcd;
    if (AWS3_QCD_IO(YY, MM, DD, HH, MI, aws_id, &qcd, 'r') < 0) return 0;
    AWS3_QCD(aws, &qcd);
    return 0;
}

int AWS3_QCD(AWS3_DATA *aws, const struct AWS3_QCD *qcd)
{
    // The highest level that flags an element decides; level 7 keeps the value. Levels are
    // visited from the top, and only the flags no higher level has set count: a few bit steps
    // per record rather than 7 x 64 tests.
    uint64_t decided = 0;
    for (int k = AWS3_QC_KEEP_LEVEL; k >= 1; k--) {
        uint64_t word = qcd->qc[k];
        uint64_t flags = word & ~decided;
        decided |= word;
        if (k == AWS3_QC_KEEP_LEVEL) continue;
        for (; flags != 0; flags &= flags - 1) aws->d[__builtin_ctzll(flags)] = (int16_t)(AWS3_QC_REJECTED + k);
    }
    return 0;
}
