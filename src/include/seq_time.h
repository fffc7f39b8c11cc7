// Minute-sequence time: minutes (or hours, or days) since 1900-01-01 00:00 local time on a
// calendar where every year divisible by 4 is a leap year. All functions return 0 or a sequence.
#ifndef SEQ_TIME_H
#define SEQ_TIME_H

// Current local date and time; the year has four digits.
int get_time(int *YY, int *MM, int *DD, int *HH, int *MI, int *SS);

// Date and time to a sequence number: mode 'm' minutes, 'h' hours, any other days.
// Out-of-range fields carry over; months are bounded to 0..13 so the month table is never overrun.
int time2seq(int YY, int MM, int DD, int HH, int MI, char mode);

// Sequence number back to date and time. With c24 'y' midnight reads as hour 24 of the day
// before. Negative sequence numbers are taken as 0, the start of the calendar.
int seq2time(int seq, int *YY, int *MM, int *DD, int *HH, int *MI, char mode, char c24);

#endif
