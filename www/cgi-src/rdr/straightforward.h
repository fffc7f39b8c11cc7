// Built with RDR_STRAIGHTFORWARD the program takes the plain road wherever it has a faster one
// (zlib, one read per grid, the whole terrain, pixels through the graphics library): the
// reference the fast roads must match pixel for pixel. Decided when compiling.
#ifndef STRAIGHTFORWARD_H
#define STRAIGHTFORWARD_H

#ifdef RDR_STRAIGHTFORWARD
constexpr bool STRAIGHTFORWARD = true;
#else
constexpr bool STRAIGHTFORWARD = false;
#endif

#endif
