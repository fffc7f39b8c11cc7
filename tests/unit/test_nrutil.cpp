// Index-range arrays: bounds, empty ranges and the fatal failure message.
#include <gtest/gtest.h>

#include "nrutil.h"

namespace {

TEST(Nrutil, MatricesAreIndexedByTheirBounds)
{
    float **m = matrix(0, 2, 0, 3);
    for (int j = 0; j <= 2; j++)
        for (int i = 0; i <= 3; i++) m[j][i] = (float)(j * 10 + i);
    EXPECT_EQ(m[2][3], 23.0f);
    EXPECT_EQ(m[1][0], 10.0f);
    free_matrix(m, 0, 2, 0, 3);

    short **s = smatrix(0, 1440, 0, 1152);
    s[1440][1152] = -7;
    EXPECT_EQ(s[1440][1152], -7);
    free_smatrix(s, 0, 1440, 0, 1152);

    char *v = cvector(0, 9);
    v[9] = 'z';
    EXPECT_EQ(v[9], 'z');
    free_cvector(v, 0, 9);
}

TEST(Nrutil, EmptyRangesAreLegal)
{
    char *v = cvector(0, -1);
    ASSERT_NE(v, nullptr);
    free_cvector(v, 0, -1);
    float **m = matrix(0, -1, 0, -1);
    ASSERT_NE(m, nullptr);
    free_matrix(m, 0, -1, 0, -1);
    unsigned char **c = cmatrix(0, 3, 0, -1);
    free_cmatrix(c, 0, 3, 0, -1);
}

TEST(NrutilDeathTest, EnormousCountsEndTheProcessWithTheMessage)
{
    EXPECT_EXIT(cvector(0, -2), testing::ExitedWithCode(1),
                "Numerical Recipes run-time error...\nallocation failure in cvector\\(\\)\n"
                "...now exiting to system...");
    EXPECT_EXIT(svector(0, -3), testing::ExitedWithCode(1), "allocation failure in svector");
    EXPECT_EXIT(matrix(0, -5, 0, 10), testing::ExitedWithCode(1), "allocation failure 1 in matrix");
    EXPECT_EXIT(matrix(0, 5, 0, -10), testing::ExitedWithCode(1), "allocation failure 2 in matrix");
    EXPECT_EXIT(cmatrix(0, 2, 0, -30000), testing::ExitedWithCode(1), "allocation failure 2 in cmatrix");
    EXPECT_EXIT(smatrix(0, -2, 0, 2), testing::ExitedWithCode(1), "allocation failure 1 in smatrix");
}

}  // namespace
