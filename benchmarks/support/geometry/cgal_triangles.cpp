#include "benchmarks/support/geometry/cgal_triangles.h"

#include <CGAL/Simple_cartesian.h>
#include <CGAL/Triangle_3.h>
#include <CGAL/intersections.h>

using KERNEL = CGAL::Simple_cartesian<float>;

struct CGAL_TRIANGLES::STORE {
    std::vector<KERNEL::Triangle_3> triangles;
};

CGAL_TRIANGLES::CGAL_TRIANGLES(std::vector<SUPPORT::TRIANGLE3> const &triangles) : store(new STORE)
{
    auto const point = [](SUPPORT::VECTOR3 const &v) { return KERNEL::Point_3(v.x, v.y, v.z); };
    for (SUPPORT::TRIANGLE3 const &t : triangles)
        store->triangles.emplace_back(point(t.corners[0]), point(t.corners[1]), point(t.corners[2]));
}

CGAL_TRIANGLES::~CGAL_TRIANGLES() = default;

unsigned CGAL_TRIANGLES::count_meetings() const
{
    unsigned meetings = 0;
    for (std::size_t i = 0; i < store->triangles.size(); i += 2)
        meetings += CGAL::do_intersect(store->triangles[i], store->triangles[i + 1]);
    return meetings;
}
