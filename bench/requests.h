// The requests the benchmark times, and whose pictures the fast and the straightforward builds
// must draw alike. The data time is the hour that the sample tree holds.
#ifndef BENCH_REQUESTS_H
#define BENCH_REQUESTS_H

namespace bench {

constexpr const char *kDataTime = "tm=202407150930";

constexpr const char *kRequests[] = {
    "obs=RNSN&size=600&gis=T&legend=1",
    "obs=HSR&size=1000&legend=1&aws=8&zoom_level=1&zoom_rate=2&zoom_x=4300000&zoom_y=5200000",
    "obs=RN15X&size=800&griddisp=1&aws=3&zoom_level=3&zoom_rate=2&zoom_x=4420000&zoom_y=5330000",
    "obs=TW&size=600&gis=T",
    "obs=RNEX&size=1200&aws=1&zoom_level=2&zoom_rate=3&zoom_x=5500000&zoom_y=4400000",
};

// The probe's answers (a point with its station, a line of the most samples), each timed beside
// the picture that inflates the same bytes: the goal is a probe no slower than that picture.
constexpr const char *kProbePicture = "obs=RN15X&size=600";
constexpr const char *kProbeRequests[] = {
    "x=646&y=786",
    "x1=400&y1=500&x2=900&y2=1000&n=2000",
};

}  // namespace bench

#endif
