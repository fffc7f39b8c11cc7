// Files that close themselves, and positioned reads.
#ifndef FILE_PTR_H
#define FILE_PTR_H

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>

struct FileCloser {
    void operator()(std::FILE *fp) const { std::fclose(fp); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// Opens a path that a composer filled; a composer's failure (-1) counts as a missing file.
inline FilePtr open_file(int compose_status, const char *path, const char *mode)
{
    if (compose_status != 0) return FilePtr();
    return FilePtr(std::fopen(path, mode));
}

// Up to `bytes` bytes of the file at `offset`, without moving its position; fewer only at the
// file's end or on an error.
inline long long read_at(int fd, void *buf, long long bytes, long long offset)
{
    long long done = 0;
    while (done < bytes) {
        ssize_t n = pread(fd, (char *)buf + done, (std::size_t)(bytes - done), (off_t)(offset + done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += n;
    }
    return done;
}

#endif
