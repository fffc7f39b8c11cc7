// Little-endian field access for the packed binary formats, independent of the host's order.
#ifndef LE_BYTES_H
#define LE_BYTES_H

#include <cstdint>

inline int16_t le_i16(const unsigned char *p) { return (int16_t)(uint16_t)(p[0] | (p[1] << 8)); }

inline uint64_t le_u64(const unsigned char *p)
{
    uint64_t v = 0;
    for (int i = 7; i >= 0; i--) v = (v << 8) | p[i];
    return v;
}

inline void put_le_i16(unsigned char *p, int v)
{
    p[0] = (unsigned char)(v & 0xff);
    p[1] = (unsigned char)((v >> 8) & 0xff);
}

inline void put_le_u64(unsigned char *p, uint64_t v)
{
    for (int i = 0; i < 8; i++) p[i] = (unsigned char)(v >> (8 * i));
}

#endif
