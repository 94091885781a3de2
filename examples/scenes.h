// The scenes of the example tree. Each function writes one scene file at `path`, the pictures it names apart, and is
// false, with a line on standard error, if that fails. The same call makes the same bytes everywhere.
#pragma once

#include "foundation/string.h"

namespace EXAMPLES {

// A thatched hut: display meshes in three explicit levels of detail and two collision meshes.
bool write_hut(KN::String const &path);
// The fence around the hut, which it refers to as "hut.vx2".
bool write_yard(KN::String const &path);
// A round tower in one level of detail.
bool write_tower(KN::String const &path);
// A villager who waves: one weighted mesh on 18 nodes.
bool write_villager(KN::String const &path);
// A soldier who marches in place, on the same nodes.
bool write_soldier(KN::String const &path);
// A horse: one weighted mesh on 14 nodes.
bool write_horse(KN::String const &path);
// The nodes of a man, a horse and a camera, for one scene with several actors.
bool write_meeting(KN::String const &path);
// An oak, 9 m high: bark, and leaves on cards whose pictures have seasons.
bool write_oak(KN::String const &path);
// A square of hills, 80 m a side.
bool write_hills(KN::String const &path);
// A barrel in a file of version 1.02, from before objects had attributes and vertices had frames.
bool write_barrel(KN::String const &path);

}  // namespace EXAMPLES
