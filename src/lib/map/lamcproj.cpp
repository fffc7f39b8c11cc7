// Lambert conformal conic projection with two standard parallels on an ellipsoid.
#include "lamcproj.h"

#include <cmath>

namespace {

// One set of derived constants for the process, shared by every call and every record.
struct LamcCache {
    double PI, DEGRAD, RADDEG;
    double ea, f, ep;
    double re, olon, olat;
    double sn, sf, ro;
};
LamcCache c;

double isometric_t(double phi)
{
    double e_sin = c.ep * std::sin(phi);
    return std::tan(c.PI * 0.25 - 0.5 * phi) / std::pow((1.0 - e_sin) / (1.0 + e_sin), c.ep * 0.5);
}

void derive_constants(lamc_parameter *map)
{
    c.PI = 3.141592653589793;
    c.DEGRAD = c.PI / 180.0;
    c.RADDEG = 180.0 / c.PI;
    c.ea = 6378.138;
    c.f = 0.0033528106647474805;
    c.ep = std::sqrt(c.f + c.f - c.f * c.f);
    c.re = c.ea / (double)map->grid;

    double slat1 = (double)map->slat1 * c.DEGRAD;
    double slat2 = (double)map->slat2 * c.DEGRAD;
    c.olon = (double)map->olon * c.DEGRAD;
    c.olat = (double)map->olat * c.DEGRAD;

    double s1 = std::sin(slat1), s2 = std::sin(slat2);
    double m1 = std::cos(slat1) / std::sqrt(1.0 - c.ep * c.ep * s1 * s1);
    double m2 = std::cos(slat2) / std::sqrt(1.0 - c.ep * c.ep * s2 * s2);
    double t1 = isometric_t(slat1);
    double t2 = isometric_t(slat2);
    c.sn = (std::log(m1) - std::log(m2)) / (std::log(t1) - std::log(t2));
    c.sf = m1 / (std::pow(t1, c.sn) * c.sn);
    c.ro = c.re * c.sf * std::pow(isometric_t(c.olat), c.sn);
    map->first = 1;
}

void forward(float *lon, float *lat, float *x, float *y, const lamc_parameter *map)
{
    double ra = c.re * c.sf * std::pow(isometric_t((double)*lat * c.DEGRAD), c.sn);
    double theta = ((double)*lon * c.DEGRAD - c.olon) * c.sn;
    *x = (float)(std::sin(theta) * ra) + map->xo;
    *y = (float)(c.ro - std::cos(theta) * ra) + map->yo;
}

void inverse(float *lon, float *lat, float *x, float *y, const lamc_parameter *map)
{
    double xn = (double)(*x - map->xo);
    double yn = (double)map->yo + (c.ro - (double)*y);
    double ra = std::sqrt(xn * xn + yn * yn);
    double t = std::pow(ra / (c.sf * c.re), 1.0 / c.sn);

    // Fixed-point iteration for the latitude: always five steps, no convergence test.
    double phi = c.PI * 0.5 - 2.0 * std::atan(t);
    for (int k = 0; k < 5; k++) {
        double e_sin = c.ep * std::sin(phi);
        phi = c.PI * 0.5 - 2.0 * std::atan(t * std::pow((1.0 - e_sin) / (1.0 + e_sin), c.ep * 0.5));
    }
    double lambda = std::atan2(xn, yn) / c.sn + c.olon;
    *lat = (float)(c.RADDEG * phi);
    *lon = (float)(c.RADDEG * lambda);
}

}  // namespace

int lamcproj_ellp(float *lon, float *lat, float *x, float *y, int code, lamc_parameter *map)
{
    if (map->first == 0) derive_constants(map);
    if (code == 0)
        forward(lon, lat, x, y, map);
    else
        inverse(lon, lat, x, y, map);
    return 0;
}
