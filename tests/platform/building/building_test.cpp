#include "Plugins/Vx2/host/building_description.h"

#include "Plugins/Vx2/host/progress_callback.h"
#include "foundation/file.h"
#include "platform/building/incendiary_points.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <limits>
#include <unistd.h>

using CORVANEUTILITY::incendiary_points;

namespace {

// A square of `size` metres on the ground, split into strips of very different width: density must not follow the
// triangles.
GLTF::GEOMETRY square(float size)
{
    GLTF::GEOMETRY mesh;
    mesh.name = "square";
    float const cuts[] = {0, 0.01f, 0.02f, 0.5f, 1};
    for (float const cut : cuts) {
        mesh.positions.insert(mesh.positions.end(), {cut * size, 0, 0});
        mesh.positions.insert(mesh.positions.end(), {cut * size, 0, size});
    }
    for (std::uint32_t i = 0; i < 8; i += 2)
        mesh.indices.insert(mesh.indices.end(), {i, i + 1, i + 2, i + 2, i + 1, i + 3});
    return mesh;
}

struct REPORT : PROGRESS_CALLBACK {
    void output_line(QString const &line, int level) override { lines.emplace_back(line.toStdString(), level); }
    bool add_progress(int) override { return true; }
    std::vector<std::pair<std::string, int>> lines;
};

}  // namespace

TEST(IncendiaryPoints, KeepTheirDistanceAndCoverTheSurfaceEvenly)
{
    auto const points = incendiary_points({square(40)}, 1);
    // Discs of diameter 1 cannot fill more than 0.9069 of the area; random ones come to rest above 0.5.
    EXPECT_LT(points.size(), 0.9069 * 1600 / (M_PI / 4));
    EXPECT_GT(points.size(), 0.5 * 1600 / (M_PI / 4));
    std::size_t quarters[4] = {};
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_EQ(points[i][1], 0);
        EXPECT_TRUE(points[i][0] >= 0 && points[i][0] <= 40 && points[i][2] >= 0 && points[i][2] <= 40);
        ++quarters[(points[i][0] > 20) * 2 + (points[i][2] > 20)];
        for (std::size_t k = 0; k < i; ++k)
            EXPECT_GE(
                std::hypot(double(points[i][0]) - double(points[k][0]), double(points[i][2]) - double(points[k][2])),
                1);
    }
    for (std::size_t const quarter : quarters)
        EXPECT_NEAR(double(quarter), double(points.size()) / 4, 0.05 * double(points.size()));
    EXPECT_EQ(points, incendiary_points({square(40)}, 1));
}

TEST(IncendiaryPoints, OddRadiiAndSurfacesEndWell)
{
    float const infinite = std::numeric_limits<float>::infinity();
    for (float const radius : {0.0f, -1.0f, NAN, infinite})
        EXPECT_TRUE(incendiary_points({square(4)}, radius).empty()) << radius;
    GLTF::GEOMETRY line = square(4);
    for (std::size_t i = 0; i < line.positions.size(); ++i)
        line.positions[i] = float(i);
    EXPECT_TRUE(incendiary_points({line}, 1).empty());
    EXPECT_TRUE(incendiary_points({}, 1).empty());

    EXPECT_EQ(incendiary_points({square(4)}, 1e30f).size(), 1u);
    auto const most = incendiary_points({square(4)}, 1e-30f);
    EXPECT_GT(most.size(), 8000u);
    EXPECT_LE(most.size(), CORVANEUTILITY::most_incendiary_points);
    EXPECT_FALSE(incendiary_points({square(1e18f)}, 1e-30f).empty());
}

TEST(BuildingDescription, JoinsBothFilesAndReportsFaults)
{
    std::string const folder = std::filesystem::temp_directory_path() / ("mox_building_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    KN::String const parsed = folder + "/parsed", collision = folder + "/collision", target = folder + "/target";
    auto const describe = [&] {
        REPORT report;
        CORVANEUTILITY::BUILDING_DESCRIPTION(parsed, collision, target, target, true, &report, 2);
        EXPECT_EQ(report.lines.size(), 1u);
        return report.lines.at(0);
    };

    EXPECT_EQ(describe().second, 2);  // nothing to read
    EXPECT_FALSE(KN::exists(target));
    KN::String error;
    ASSERT_TRUE(GLTF::write_geometry({square(10)}, {}, {}, parsed, error));
    EXPECT_EQ(describe().second, 0);
    std::vector<GLTF::GEOMETRY> meshes;
    ASSERT_TRUE(GLTF::read_geometry(target, meshes, error)) << error;
    EXPECT_EQ(meshes.size(), 1u);
    std::stringstream text;
    text << std::ifstream(target).rdbuf();
    EXPECT_THAT(text.str(), testing::HasSubstr("\"can_burn\":true"));
    EXPECT_THAT(text.str(), testing::HasSubstr("\"greatest\":[10.0,0.0,10.0]"));
    EXPECT_THAT(text.str(), testing::HasSubstr("\"incendiary_points\":[["));

    ASSERT_TRUE(GLTF::write_geometry({square(3), square(4)}, {}, {}, collision, error));
    EXPECT_EQ(describe().second, 0);
    ASSERT_TRUE(GLTF::read_geometry(target, meshes, error)) << error;
    EXPECT_EQ(meshes.size(), 3u);
    std::ofstream(collision) << "no model";
    EXPECT_EQ(describe().second, 2);
    std::filesystem::remove_all(folder);
}
