// The hourly AWS minute data and quality-control files: one slot per station number and minute,
// one cached open file per accessor. Accessors return AWS3_OK or a negative AWS3_* code;
// AWS3_DATA_READ returns 0 or -1, AWS3_QCD (the function) always 0.
#ifndef AWS3_IO_H
#define AWS3_IO_H

#include <cstdio>

#include "aws3_data.h"

// The records are moved to and from the files as they lie in memory.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the minute and QC files are little-endian");

// Station numbers 0..AWS3_STN_SLOTS-1 own a slot in every minute block.
constexpr int AWS3_STN_SLOTS = 10000;
constexpr long long AWS3_DATA_BLOCK = (long long)AWS3_STN_SLOTS * sizeof(AWS3_DATA);
constexpr long long AWS3_QCD_BLOCK = (long long)AWS3_STN_SLOTS * sizeof(AWS3_QCD);

constexpr int AWS3_OK = 0;
constexpr int AWS3_NOT_OPENED = -1;   // also: a mode other than 'r', 'w' or 'c'
constexpr int AWS3_SEEK_FAILED = -3;
constexpr int AWS3_SHORT_IO = -4;     // fewer records transferred than asked
constexpr int AWS3_BAD_STATION = -9;

// QC flag words: one per level 0..7. Level 0 is not consulted; a flag of level 7 keeps the
// element; levels 1..6 replace it with AWS3_QC_REJECTED + level (-997 .. -992).
constexpr int AWS3_QC_LEVELS = 8;
constexpr int AWS3_QC_KEEP_LEVEL = 7;
constexpr int AWS3_QC_ELEMENTS = 64;  // elements from 64 on are never flagged
constexpr int AWS3_QC_REJECTED = -998;

// Where the library's messages go; the host sets it. Unset (null), nothing is written.
extern FILE *fp_log;

// Reads ('r') or writes ('w') the record of station aws_id at minute MI of the hour, or closes
// the cached file ('c'). A negative aws_id addresses the whole minute block, and `aws` must then
// hold AWS3_STN_SLOTS records. Any other mode gives -1 and changes nothing.
int AWS3_DATA_IO(int YY, int MM, int DD, int HH, int MI, int aws_id, AWS3_DATA *aws, char mode);

// The same for the QC file, one record at a time: aws_id outside 0..9999 gives -9.
int AWS3_QCD_IO(int YY, int MM, int DD, int HH, int MI, int aws_id, struct AWS3_QCD *qcd, char mode);

// One station's data record with its QC applied. `mode` is ignored: both files are read.
// -1 when the data record cannot be read; a missing QC record leaves the data as read.
int AWS3_DATA_READ(int YY, int MM, int DD, int HH, int MI, int aws_id, AWS3_DATA *aws, char mode);

// Applies the QC flags of `qcd` to the data record in place.
int AWS3_QCD(AWS3_DATA *aws, const struct AWS3_QCD *qcd);

#endif
