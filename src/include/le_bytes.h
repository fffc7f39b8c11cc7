// Little-endian field access for the packed binary formats, independent of the host's order.
#ifndef LE_BYTES_H
#define LE_BYTES_H

#include <cstdint>

inline int16_t le_i16(const unsigned char *p) { return (int16_t)(uint16_t)(p[0] | (p[1] << 8)); }

inline void put_le_i16(unsigned char *p, int v)
{
    p[0] = (unsigned char)(v & 0xff);
    p[1] = (unsigned char)((v >> 8) & 0xff);
}

#endif
