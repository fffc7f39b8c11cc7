// Deterministic randomness for the sample tree: a seeded generator and smooth value noise, so
// that every run writes the same files. Noise values lie in [0, 1]; lattice coordinates are
// clamped to a bounded range before they become integers.
#ifndef SAMPLE_RANDOM_H
#define SAMPLE_RANDOM_H

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace sample {

// splitmix64: small, fast and the same on every platform (the standard distributions are not).
class Rng {
public:
    explicit Rng(uint64_t seed) : state_(seed) {}
    uint64_t next()
    {
        uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }
    double uniform(double lo, double hi) { return lo + (hi - lo) * (double)(next() >> 11) / 9007199254740992.0; }
    int below(int n) { return (int)(next() % (uint64_t)n); }

private:
    uint64_t state_;
};

inline uint32_t hash_ints(int32_t a, int32_t b, uint32_t seed)
{
    uint64_t h = Rng(((uint64_t)(uint32_t)a << 32) ^ (uint32_t)b ^ ((uint64_t)seed << 17)).next();
    return (uint32_t)(h >> 32);
}

inline double lattice_value(int32_t x, int32_t y, uint32_t seed) { return hash_ints(x, y, seed) / 4294967295.0; }

inline int32_t lattice_floor(double v) { return (int32_t)std::floor(std::clamp(v, -1.0e6, 1.0e6)); }

// Smoothly interpolated lattice values: features about one unit across.
inline double value_noise(double x, double y, uint32_t seed)
{
    int32_t ix = lattice_floor(x), iy = lattice_floor(y);
    double fx = std::clamp(x - ix, 0.0, 1.0), fy = std::clamp(y - iy, 0.0, 1.0);
    double sx = fx * fx * (3 - 2 * fx), sy = fy * fy * (3 - 2 * fy);
    double a = lattice_value(ix, iy, seed), b = lattice_value(ix + 1, iy, seed);
    double c = lattice_value(ix, iy + 1, seed), d = lattice_value(ix + 1, iy + 1, seed);
    return (a + (b - a) * sx) * (1 - sy) + (c + (d - c) * sx) * sy;
}

// Fractal sum of `octaves` noises, each half the size and half the weight of the one before.
inline double fractal_noise(double x, double y, int octaves, uint32_t seed)
{
    double sum = 0, weight = 1, total = 0;
    for (int k = 0; k < octaves; k++) {
        sum += weight * value_noise(x, y, seed + 101u * (uint32_t)k);
        total += weight;
        x *= 2.03;
        y *= 2.03;
        weight *= 0.5;
    }
    return sum / total;
}

}  // namespace sample

#endif
