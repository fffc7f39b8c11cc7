// Minute-sequence time on the every-fourth-year-is-leap calendar that starts 1900-01-01 00:00.
#include "seq_time.h"

#include <ctime>

namespace {

const int kMonthDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

}  // namespace

int get_time(int *YY, int *MM, int *DD, int *HH, int *MI, int *SS)
{
    time_t now = time(nullptr);
    struct tm t{};
    localtime_r(&now, &t);
    *YY = t.tm_year + (t.tm_year <= 49 ? 2000 : 1900);
    *MM = t.tm_mon + 1;
    *DD = t.tm_mday;
    *HH = t.tm_hour;
    *MI = t.tm_min;
    *SS = t.tm_sec;
    return 0;
}

int time2seq(int YY, int MM, int DD, int HH, int MI, char mode)
{
    // Month 13 adds all twelve months; anything beyond would read past the table.
    if (MM > 13) MM = 13;
    int y = YY - 1900;
    int days = y * 365 + (y + 3) / 4;
    for (int m = 1; m < MM; m++) days += kMonthDays[m - 1];
    if (MM > 2 && YY % 4 == 0) days += 1;
    days += DD - 1;

    if (mode == 'h') return days * 24 + HH;
    if (mode == 'm') return (days * 24 + HH) * 60 + MI;
    return days;
}

int seq2time(int seq, int *YY, int *MM, int *DD, int *HH, int *MI, char mode, char c24)
{
    if (seq < 0) seq = 0;

    *MI = 0;
    if (mode == 'm') {
        *MI = seq % 60;
        seq /= 60;
    }
    *HH = 0;
    if (mode == 'h' || mode == 'm') {
        *HH = seq % 24;
        seq /= 24;
        if (c24 == 'y' && *HH == 0 && *MI == 0 && seq > 0) {
            *HH = 24;
            seq -= 1;
        }
    }

    int year = (seq / 1461 + 475) * 4;
    int r = seq % 1461;
    if (r > 365) {
        r -= 366;
        year += r / 365 + 1;
        r %= 365;
    }
    r += 1;

    int month = 1;
    for (; month <= 12; month++) {
        int len = kMonthDays[month - 1] + ((month == 2 && year % 4 == 0) ? 1 : 0);
        if (r <= len) break;
        r -= len;
    }
    *YY = year;
    *MM = month;
    *DD = r;
    return 0;
}
