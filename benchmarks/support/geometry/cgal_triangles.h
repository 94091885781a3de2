// The rival of the triangle test: CGAL with plain 32-bit floats. Its headers stay behind this one.
#pragma once

#include "support/geometry/triangle_triangle.h"

#include <memory>
#include <vector>

class CGAL_TRIANGLES {
public:
    explicit CGAL_TRIANGLES(std::vector<SUPPORT::TRIANGLE3> const &triangles);
    ~CGAL_TRIANGLES();

    // Of the pairs 0 and 1, 2 and 3, ..., how many meet.
    unsigned count_meetings() const;

private:
    struct STORE;
    std::unique_ptr<STORE> store;
};
