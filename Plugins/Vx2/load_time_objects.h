// What the library brings up while it is being loaded, in one fixed order: the material type names, the tweaker, the
// rule schemas, the angle table. They live until it is unloaded; schemas and tweaker enter themselves with the host and
// take themselves out again. One source file holds them all, because only within one file is the order certain.
#pragma once

#include "Plugins/Vx2/host/tweaker.h"
#include "foundation/string.h"
#include "support/maths/angle_table.h"

// Names of the rigid material types by number; some stand more than once. Nothing here looks one up.
inline constexpr unsigned RIGID_MATERIAL_TYPE_COUNT = 102;
extern KN::String const RIGID_MATERIAL_TYPE_NAMES[RIGID_MATERIAL_TYPE_COUNT];
extern KN::String const DECAL_OVERLAY;
extern KN::String const ALPHA_BLEND;

// An integer that the user of the host can set. The process has one table of tweakers by name; of two libraries that
// bring the same name, the first has the entry, and the other one keeps its default.
class INTEGER_TWEAKER : public UTILITYDLL::I_TWEAKER {
public:
    // Defined in line `place` of the source `file`.
    INTEGER_TWEAKER(char const *called, int initial, char const *file, int place);
    ~INTEGER_TWEAKER() override;

    void write(std::ostream &stream) const override;
    void read(std::istream &stream) override;  // text that is no integer changes nothing

    int value;  // read without a lock
};

extern INTEGER_TWEAKER TREEBILLBOARD_PIXELSPERMETER;

// Sine, cosine and tangent of every 16-bit angle: the one table of the process, which its own library has built before
// anything of this one comes up.
extern SUPPORT::ANGLE_FUNCTIONS const &ANGLE_TABLE;
