#include "platform/exchange/limited_process.h"
#include "platform/exchange/normals.h"
#include "platform/exchange/picture.h"

#include <cmath>
#include <gtest/gtest.h>

using VEX2_LOADER::VEX2_VECTOR;

// Two squares of different size along a fold: the floor (normal +y) and a wall of `angle` degrees to it.
TEST(Normals, CreasesStayHardAndSmoothPlacesWeighByArea)
{
    struct {
        double angle;
        bool smooth;
    } const cases[] = {{30, true}, {59, true}, {61, false}, {90, false}};
    for (auto const &c : cases) {
        SCOPED_TRACE(c.angle);
        double const turn = c.angle * 3.14159265358979 / 180;
        float const along = float(std::cos(turn)), up = float(std::sin(turn));
        // The fold lies along z at x = 0; the floor goes to x = -1, the wall to +x, twice as long.
        VEX2_VECTOR const positions[] = {{0, 0, 0}, {0, 0, 1}, {-1, 0, 0},
                                         {0, 0, 0}, {0, 0, 1}, {2 * along, 2 * up, 0}};
        std::uint32_t const corners[] = {0, 2, 1, 3, 4, 5};
        VEX2_VECTOR normals[6];
        generate_normals(positions, corners, 0.5f, normals);
        double x = 0, y = 1;  // the floor's own
        if (c.smooth) {
            x = -2 * std::sin(turn);
            y = 1 + 2 * std::cos(turn);
        }
        double const length = std::hypot(x, y);
        EXPECT_NEAR(normals[0].x, x / length, 1e-5);
        EXPECT_NEAR(std::abs(normals[0].y), y / length, 1e-5);
        EXPECT_EQ(normals[1].z, 0);  // off the fold: flat
    }
}

TEST(Normals, TrianglesWithoutAreaTakeTheirNeighbours)
{
    VEX2_VECTOR const positions[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}};
    std::uint32_t const corners[] = {0, 1, 2, 0, 0, 1, 3, 3, 3};
    VEX2_VECTOR normals[9];
    generate_normals(positions, corners, 0.5f, normals);
    EXPECT_EQ(normals[3].z, 1);
    EXPECT_EQ(normals[8].y, 1);  // nothing there has an area
}

TEST(Picture, TgaHoldsTheTopRowFirstAndBlueFirst)
{
    PICTURE picture;
    picture.width = 1;
    picture.height = 2;
    picture.pixels = {1, 2, 3, 255, 4, 5, 6, 7};  // top, then bottom
    KN::String const tga = tga_bytes(picture);
    EXPECT_EQ(tga, std::string("\0\0\2\0\0\0\0\0\0\0\0\0\1\0\2\0\x20\x28\3\2\1\xff\6\5\4\7", 26));
    ASSERT_TRUE(is_plain_tga(tga));
    EXPECT_EQ(picture_of_plain_tga(tga).pixels, picture.pixels);
    for (std::size_t size = 0; size < tga.size(); ++size)
        EXPECT_FALSE(is_plain_tga(std::string_view(tga).substr(0, size))) << size;

    // Through another decoder.
    PICTURE decoded;
    KN::String error;
    KN::String const png = png_bytes(picture);
    ASSERT_TRUE(decode_picture(png.data(), png.size(), decoded, error)) << error;
    EXPECT_EQ(decoded.pixels, picture.pixels);
    EXPECT_FALSE(decode_picture(png.data(), png.size() / 2, decoded, error));
}

TEST(LimitedProcess, TellsHowAProgramEnded)
{
    PROCESS_LIMITS limits;
    limits.seconds = 1;
    PROCESS_RESULT const said = run_limited({"/bin/sh", "-c", "echo out; echo err >&2; exit 3"}, limits);
    EXPECT_EQ(said.ending, PROCESS_RESULT::ENDED);
    EXPECT_EQ(said.code, 3);
    EXPECT_EQ(said.output, "out\n");
    EXPECT_EQ(run_limited({"/nowhere/at/all"}, limits).ending, PROCESS_RESULT::NOT_STARTED);
    EXPECT_EQ(run_limited({"/bin/sh", "-c", "kill -ABRT $$"}, limits).ending, PROCESS_RESULT::KILLED);
    EXPECT_EQ(run_limited({"/bin/sh", "-c", "while :; do :; done"}, limits).ending, PROCESS_RESULT::OUT_OF_TIME);
}
