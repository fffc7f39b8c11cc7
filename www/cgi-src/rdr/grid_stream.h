// The grid file read forward as one stream of bytes, as zlib's gzread reads it: gzip members one
// after the other, trailing bytes after a member ignored, a file without the gzip magic read as
// it stands. Two inflaters: zlib, the reference, and ISA-L's igzip, about twice as fast, in builds
// that have it. grid_stream_open gives no stream when the file does not open; a read returns the
// bytes that arrived, fewer at the end of the data or at damage, after which nothing more comes.
#ifndef GRID_STREAM_H
#define GRID_STREAM_H

#include <memory>

enum class Inflater { Zlib, Isal };

// This build's inflater: ISA-L when the build has it, zlib in the straightforward build.
Inflater grid_inflater();
// Whether the build has ISA-L at all.
bool grid_has_isal();

struct GridStream;
struct GridStreamCloser {
    void operator()(GridStream *s) const;
};
using GridStreamPtr = std::unique_ptr<GridStream, GridStreamCloser>;

GridStreamPtr grid_stream_open(const char *path, Inflater inflater);
long grid_stream_read(GridStream *s, void *buf, long n);
void grid_stream_skip(GridStream *s, long n);

#endif
