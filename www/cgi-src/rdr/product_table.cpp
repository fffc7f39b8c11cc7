// The product table; see product_table.h.
#include "product_table.h"

#include <cstring>

namespace {

using K = ProductKind;
using R = ClassRule;
using T = ClassTable;

// Titles in EUC-KR, in UTF-8 in the comments.
const PRODUCT kProducts[] = {
    // 실황 강수영역
    {"RNEX", K::Classes, 0, R::RNEX, T::RNEX, R::None, 0, nullptr, false, " ",
     "\xbd\xc7\xc8\xb2 \xb0\xad\xbc\xf6\xbf\xb5\xbf\xaa", false},
    // 실황 눈비영역
    {"RNSN", K::Classes, 0, R::RNSN, T::RNSN, R::None, 0, nullptr, false, " ",
     "\xbd\xc7\xc8\xb2 \xb4\xab\xba\xf1\xbf\xb5\xbf\xaa", false},
    // 실황 눈비영역(최적)
    {"RNSN1", K::Classes, 0, R::RNSN1, T::RNSN, R::None, 0, nullptr, false, " ",
     "\xbd\xc7\xc8\xb2 \xb4\xab\xba\xf1\xbf\xb5\xbf\xaa(\xc3\xd6\xc0\xfb)", false},
    // 실황 눈비영역(레이더)
    {"RNSN2", K::Classes, 0, R::RNSN2, T::RNSN, R::None, 0, nullptr, false, " ",
     "\xbd\xc7\xc8\xb2 \xb4\xab\xba\xf1\xbf\xb5\xbf\xaa(\xb7\xb9\xc0\xcc\xb4\xf5)", false},
    // 눈비가능영역: the area block follows the code block.
    {"AREA", K::Classes, 1, R::AREA, T::RNSN, R::None, 0, nullptr, false, " ",
     "\xb4\xab\xba\xf1\xb0\xa1\xb4\xc9\xbf\xb5\xbf\xaa", false},
    // 실황 습구온도: stored as hundredths of a degree above -200.
    {"TW", K::Values, 2, R::None, T::RNSN, R::None, -200.0, "color_ta_e30.rgb", true, "C",
     "\xbd\xc7\xc8\xb2 \xbd\xc0\xb1\xb8\xbf\xc2\xb5\xb5", true},
    // 실황 레이더
    {"HSR", K::Values, 4, R::None, T::RNSN, R::RNSN, 0, "color_rn_echo.rgb", false, "mm/h",
     "\xbd\xc7\xc8\xb2 \xb7\xb9\xc0\xcc\xb4\xf5", false},
    // AWS 강수(15분)*4
    {"RN15X", K::Values, 6, R::None, T::RNSN, R::RNSN, 0, "color_rn_echo.rgb", false, "mm/h",
     "AWS \xb0\xad\xbc\xf6(15\xba\xd0)*4", false},
};

// A code of the rain/snow family without a rule of its own: class 0 in every cell.
const PRODUCT kUnknownClasses = {"", K::Classes, 0, R::None, T::RNSN, R::None, 0, nullptr, false, " ", "", false};
// Any other code reads int16 values from the code block and has no colours.
const PRODUCT kUnknownValues = {"", K::Values, 0, R::None, T::RNSN, R::None, 0, nullptr, false, " ", "", false};

}  // namespace

unsigned char class_of_code(ClassRule rule, unsigned char b)
{
    int A = b & 0x0f;
    int R = b >> 4;
    switch (rule) {
    case ClassRule::RNSN: return (unsigned char)((A == 0 || (A == 1 && R >= 2)) ? R : A);
    case ClassRule::RNSN1:
        if (A == 0) return (unsigned char)R;
        if (A == 1) return 1;
        return (unsigned char)(R == 0 ? A : R);
    case ClassRule::RNSN2: return (unsigned char)R;
    case ClassRule::RNEX:
        if (A >= 2) return R >= 2 ? 4 : 2;
        if (R >= 2) return 3;
        return R == 1 ? 1 : 0;
    case ClassRule::AREA: return b;
    case ClassRule::None: break;
    }
    return 0;
}

int product_count() { return (int)(sizeof kProducts / sizeof kProducts[0]); }

const PRODUCT &product_at(int k) { return kProducts[k]; }

const PRODUCT &product_of(const char *obs)
{
    for (const PRODUCT &p : kProducts)
        if (std::strcmp(obs, p.code) == 0) return p;
    return std::strstr(obs, "RNSN") ? kUnknownClasses : kUnknownValues;
}
