// <model_statistics filename="" texture_folder="" bytes=""> with one <level> for each level of detail.

#include "Plugins/Vx2/host/model_statistics.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/conversion/xml_text.h"

using TOOLDATABUILDER::number_text;
using TOOLDATABUILDER::xml_escaped;

static std::string corner_text(float const (&corner)[3])
{
    return number_text(corner[0]) + " " + number_text(corner[1]) + " " + number_text(corner[2]);
}

bool MODEL_STATISTICS::save(KN::String const &target) const
{
    auto const number = [](auto value) { return std::to_string(value); };
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<model_statistics filename=\"" +
                       xml_escaped(KN::to_utf8(KN::must_fix_string_widen(filename))) + "\" texture_folder=\"" +
                       xml_escaped(KN::to_utf8(texture_folder)) + "\" bytes=\"" + number(file_size) + "\">\n";
    for (std::size_t i = 0; i < levels.size(); ++i) {
        MODEL_LEVEL_STATISTICS const &level = levels[i];
        text += "    <level index=\"" + number(i) + "\" distance=\"" + number_text(level.distance) + "\" meshes=\"" +
                number(level.meshes) + "\" triangles=\"" + number(level.triangles) + "\" vertices=\"" +
                number(level.vertices) + "\" materials=\"" + number(level.materials) + "\" bones=\"" +
                number(level.bones) + "\" bytes=\"" + number(level.bytes) + "\" least=\"" + corner_text(level.least) +
                "\" greatest=\"" + corner_text(level.greatest) + "\"/>\n";
    }
    text += "</model_statistics>\n";
    KN::String error;
    KN::String const path = KN::disk_path(KN::must_fix_string_widen(target)) + ".model_statistics";
    return KN::write_finished_file(path, text, error);
}
