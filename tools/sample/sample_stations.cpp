// Station places, names and catalogue rows. Main stations sit at cities, numbered 100, 104, ..;
// the others are spread over South Korean land at least kSpacingKm apart, numbered from 300 on.
// Every name is made of place-name syllables (a hill station's name ends in a hill word).
#include "sample_stations.h"

#include <iconv.h>

#include <cmath>
#include <set>

#include "sample_random.h"
#include "station_writers.h"

namespace sample {

namespace {

constexpr int kOtherStations = 660;
constexpr double kSpacingKm = 7.0;
constexpr int kFirstOtherId = 300;
constexpr int kFirstMainId = 100, kMainIdStep = 4;

// Where the main stations stand: latitude and longitude of cities.
struct Place {
    double lat, lon;
};

const Place kMainPlaces[] = {
    {38.25, 128.56}, {38.15, 127.30}, {37.90, 127.06}, {37.68, 128.72}, {37.90, 127.74}, {37.75, 128.89},
    {37.57, 126.97}, {37.48, 126.62}, {37.34, 127.95}, {37.48, 130.90}, {37.26, 126.98}, {37.18, 128.46},
    {36.97, 127.95}, {36.78, 126.49}, {36.99, 129.41}, {36.64, 127.44}, {36.37, 127.37}, {36.22, 127.99},
    {36.57, 128.71}, {36.03, 129.38}, {36.00, 126.76}, {35.88, 128.65}, {35.82, 127.16}, {35.58, 129.33},
    {35.17, 128.57}, {35.17, 126.89}, {35.10, 129.03}, {34.85, 128.44}, {34.82, 126.38}, {34.74, 127.74},
    {34.40, 126.70}, {33.51, 126.53}, {33.29, 126.16}, {33.39, 126.88}, {33.25, 126.57}, {35.16, 128.04},
    {37.71, 126.45}, {37.49, 127.49}, {38.06, 128.17}, {37.16, 128.19}, {36.78, 127.12}, {36.27, 126.92},
    {35.73, 126.72}, {35.41, 127.33}, {34.69, 126.92}, {36.94, 128.91}, {36.13, 128.32}, {35.49, 128.74},
    {34.82, 127.93},
};

const char *const kFirstSyllables[] = {
    "가", "감", "강", "고", "관", "광", "구", "군", "금", "기", "남", "노", "단", "대", "덕", "도",
    "동", "두", "마", "명", "무", "문", "백", "보", "봉", "부", "북", "사", "산", "삼", "상", "서",
    "석", "성", "송", "수", "순", "신", "안", "양", "여", "연", "영", "오", "옥", "온", "용", "운",
    "원", "월", "은", "의", "인", "임", "장", "정", "제", "조", "죽", "중", "지", "진", "창", "천",
    "청", "초", "태", "평", "포", "하", "학", "한", "함", "해", "화", "효", "흥",
};
const char *const kSecondSyllables[] = {
    "가", "강", "계", "곡", "교", "구", "내", "단", "당", "덕", "동", "두", "룡", "림", "면", "명",
    "문", "봉", "북", "사", "상", "서", "석", "성", "수", "안", "암", "양", "연", "영", "오", "우",
    "원", "월", "읍", "인", "일", "장", "전", "정", "제", "주", "진", "창", "천", "촌", "탄", "평",
    "포", "풍", "하", "현", "호", "화", "흥",
};
const char *const kHillWords[] = {"산", "령", "봉", "재"};

template <typename T, std::size_t N>
const T &pick(Rng &rng, const T (&list)[N])
{
    return list[rng.below((int)N)];
}

std::string made_up_name(Rng &rng, double height_m, std::set<std::string> &taken)
{
    for (;;) {
        std::string name = std::string(pick(rng, kFirstSyllables)) + pick(rng, kSecondSyllables);
        if (height_m > 500) name += pick(rng, kHillWords);
        else if (rng.below(8) == 0) name += pick(rng, kSecondSyllables);
        if (taken.insert(name).second) return name;
    }
}

std::string euc_kr_of(const std::string &utf8)
{
    iconv_t cd = iconv_open("EUC-KR", "UTF-8");
    if (cd == (iconv_t)-1) return "?";
    std::string in = utf8, out(utf8.size() * 2 + 4, '\0');
    char *src = in.data(), *dst = out.data();
    std::size_t src_left = in.size(), dst_left = out.size();
    std::size_t done = iconv(cd, &src, &src_left, &dst, &dst_left);
    iconv_close(cd);
    if (done == (std::size_t)-1) return "?";
    out.resize(out.size() - dst_left);
    return out;
}

// The rows that the station filters drop, one kind of reason per station number.
Listing listing_of_other(int k)
{
    static const Listing kDropped[] = {Listing::other_agency, Listing::other_kind, Listing::closed,
                                       Listing::opens_later, Listing::no_rain_sensor};
    return k % 29 == 5 ? kDropped[(k / 29) % 5] : Listing::kept;
}

SampleStation station_at(int id, const std::string &name, double lon, double lat, const KmField &terrain)
{
    SampleStation s;
    s.stn_id = id;
    s.name = name;
    s.lon = lon;
    s.lat = lat;
    fixture::KmProjection(DOMAIN_SX, DOMAIN_SY).km_of_lonlat(lon, lat, &s.x, &s.y);
    s.height_m = std::max(2.0, (double)terrain.bilinear(s.x, s.y));
    return s;
}

bool far_from_all(const std::vector<SampleStation> &stations, float x, float y)
{
    for (const SampleStation &s : stations)
        if (std::hypot(s.x - x, s.y - y) < kSpacingKm) return false;
    return true;
}

}  // namespace

std::vector<SampleStation> place_stations(const Geography &geo, const KmField &terrain)
{
    std::vector<SampleStation> stations;
    std::set<std::string> taken;
    Rng rng(20240715);
    int main_id = kFirstMainId;
    for (const Place &m : kMainPlaces) {
        stations.push_back(station_at(main_id, "", m.lon, m.lat, terrain));
        stations.back().name = made_up_name(rng, stations.back().height_m, taken);
        stations.back().kind = "SA";
        stations.back().gov = "GFR";
        main_id += kMainIdStep;
    }
    fixture::KmProjection projection(DOMAIN_SX, DOMAIN_SY);
    int id = kFirstOtherId;
    int placed = 0;
    for (int tries = 0; tries < 200000 && placed < kOtherStations; tries++) {
        float x = (float)rng.uniform(420, 1010), y = (float)rng.uniform(290, 930);
        if (geo.land.nearest(x, y) <= 0 || !far_from_all(stations, x, y)) continue;
        double lon = 0, lat = 0;
        projection.lonlat_of_km(x, y, &lon, &lat);
        if (!in_south_korea(lon, lat)) continue;
        double height = terrain.bilinear(x, y);
        SampleStation s = station_at(id, made_up_name(rng, height, taken), lon, lat, terrain);
        s.kind = rng.below(3) == 0 ? "SC" : "SB";
        s.gov = "TEV";
        s.listing = listing_of_other(placed++);
        stations.push_back(s);
        // Numbers are not dense: retired numbers leave gaps.
        id += rng.below(6) == 0 ? 2 : 1;
    }
    return stations;
}

bool write_station_catalogues(const std::vector<SampleStation> &stations)
{
    const std::string open_end = "999912312359";
    std::vector<fixture::StationListRow> list;
    std::vector<fixture::SensorRow> sensors;
    std::vector<fixture::PositionRow> positions;
    for (const SampleStation &s : stations) {
        fixture::StationListRow row;
        row.stn_id = s.stn_id;
        row.name = euc_kr_of(s.name);
        row.kind = s.listing == Listing::other_kind ? "SZ" : s.kind;
        row.gov = s.listing == Listing::other_agency ? "QXZ" : s.gov;
        row.tm1 = s.listing == Listing::opens_later ? "202408010000" : s.stn_id < kFirstOtherId ? "196001010000"
                                                                                                 : "200803010000";
        row.tm2 = s.listing == Listing::closed ? "201912312359" : open_end;
        list.push_back(row);
        for (const char *code : {"TA", "RN", "WD", "HM"}) {
            if (s.listing == Listing::no_rain_sensor && std::string(code) == "RN") continue;
            sensors.push_back({s.stn_id, code, row.tm1, row.tm2});
        }
        // Every tenth station moved once: its first site stays in the list, no longer valid.
        bool moved = s.stn_id % 10 == 3;
        if (moved) positions.push_back({s.stn_id, s.lon + 0.02, s.lat - 0.015, s.height_m, row.tm1, "201506302359"});
        positions.push_back({s.stn_id, s.lon, s.lat, s.height_m, moved ? "201507010000" : row.tm1, open_end});
    }
    return fixture::write_station_list_text("STN_ID,TM_ED,TM_ST,STN_KO,STN_EN,STN_SP,LAW_ID,GOV_CD,ETC\n" +
                                            fixture::lines_of(list, fixture::station_list_line)) &&
           fixture::write_sensor_list_text("STN_ID,SEQ,OBS_CD,ETC,TM_ED,TM_ST,ETC\n" +
                                           fixture::lines_of(sensors, fixture::sensor_line)) &&
           fixture::write_position_list_text("STN_ID,SEQ,TM_ED,TM_ST,LAT,LON,HT\n" +
                                             fixture::lines_of(positions, fixture::position_line));
}

bool station_is_silent(int stn_id) { return stn_id >= kFirstOtherId && stn_id % 53 == 7; }

bool station_rain_indicator_rejected(int stn_id) { return stn_id >= kFirstOtherId && stn_id % 47 == 11; }

}  // namespace sample
