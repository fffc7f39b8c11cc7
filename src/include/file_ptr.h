// Files that close themselves.
#ifndef FILE_PTR_H
#define FILE_PTR_H

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

#endif
