// Records of the hourly AWS minute data and quality-control files, little-endian and packed.
#ifndef AWS3_DATA_H
#define AWS3_DATA_H

#include <cstdint>

#pragma pack(push, 1)
struct TIMES3 {
    int16_t YY;
    int8_t MM, DD, HH, MI;
};

// One station's values for one minute; elements are integers in tenths, negative when missing.
struct AWS3_DATA {
    int16_t aws_id;
    TIMES3 aws_tm;
    int16_t d[88];
};

// The quality-control result of one station and minute; qc[k] is the flag word of level k.
struct AWS3_QCD {
    int16_t aws_id;
    int16_t lau_id;
    TIMES3 aws_tm;
    TIMES3 lau_tm;
    TIMES3 rec_tm;
    uint64_t state[2];
    uint8_t version;
    uint8_t qc_step;
    TIMES3 qcd_tm;
    uint64_t qc[8];
};
#pragma pack(pop)
static_assert(sizeof(TIMES3) == 6, "TIMES3 is 6 bytes");
static_assert(sizeof(AWS3_DATA) == 184, "a minute data record is 184 bytes");
static_assert(sizeof(AWS3_QCD) == 110, "a QC record is 110 bytes");

#endif
