// The 64-byte header of the precipitation-type grid file, little-endian and packed.
#ifndef RDR_CMP_HEADER_H
#define RDR_CMP_HEADER_H

#include "le_bytes.h"

#pragma pack(push, 1)
struct TIME_SS {
    short YY;
    char MM, DD, HH, MI, SS;
};

struct RDR_CMP_HEAD {
    char version;
    short ptype;
    TIME_SS tm;
    TIME_SS tm_in;
    char num_stn;
    char map_code;
    char map_etc;
    short nx, ny, nz;
    short dxy, dz;
    short z_min;
    char num_data;
    char data_code[16];
    char etc[15];
};
#pragma pack(pop)
static_assert(sizeof(TIME_SS) == 7, "TIME_SS is 7 bytes");
static_assert(sizeof(RDR_CMP_HEAD) == 64, "the grid header is 64 bytes");

constexpr int RDR_CMP_HEAD_SIZE = 64;

inline TIME_SS decode_time_ss(const unsigned char *p)
{
    TIME_SS t;
    t.YY = le_i16(p);
    t.MM = (char)p[2]; t.DD = (char)p[3]; t.HH = (char)p[4]; t.MI = (char)p[5]; t.SS = (char)p[6];
    return t;
}

inline void encode_time_ss(unsigned char *p, const TIME_SS &t)
{
    put_le_i16(p, t.YY);
    p[2] = (unsigned char)t.MM; p[3] = (unsigned char)t.DD; p[4] = (unsigned char)t.HH;
    p[5] = (unsigned char)t.MI; p[6] = (unsigned char)t.SS;
}

inline RDR_CMP_HEAD decode_rdr_cmp_head(const unsigned char *p)
{
    RDR_CMP_HEAD h;
    h.version = (char)p[0];
    h.ptype = le_i16(p + 1);
    h.tm = decode_time_ss(p + 3);
    h.tm_in = decode_time_ss(p + 10);
    h.num_stn = (char)p[17];
    h.map_code = (char)p[18];
    h.map_etc = (char)p[19];
    h.nx = le_i16(p + 20);
    h.ny = le_i16(p + 22);
    h.nz = le_i16(p + 24);
    h.dxy = le_i16(p + 26);
    h.dz = le_i16(p + 28);
    h.z_min = le_i16(p + 30);
    h.num_data = (char)p[32];
    for (int i = 0; i < 16; i++) h.data_code[i] = (char)p[33 + i];
    for (int i = 0; i < 15; i++) h.etc[i] = (char)p[49 + i];
    return h;
}

inline void encode_rdr_cmp_head(unsigned char *p, const RDR_CMP_HEAD &h)
{
    p[0] = (unsigned char)h.version;
    put_le_i16(p + 1, h.ptype);
    encode_time_ss(p + 3, h.tm);
    encode_time_ss(p + 10, h.tm_in);
    p[17] = (unsigned char)h.num_stn;
    p[18] = (unsigned char)h.map_code;
    p[19] = (unsigned char)h.map_etc;
    put_le_i16(p + 20, h.nx);
    put_le_i16(p + 22, h.ny);
    put_le_i16(p + 24, h.nz);
    put_le_i16(p + 26, h.dxy);
    put_le_i16(p + 28, h.dz);
    put_le_i16(p + 30, h.z_min);
    p[32] = (unsigned char)h.num_data;
    for (int i = 0; i < 16; i++) p[33 + i] = (unsigned char)h.data_code[i];
    for (int i = 0; i < 15; i++) p[49 + i] = (unsigned char)h.etc[i];
}

#endif
