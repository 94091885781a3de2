#include "Plugins/Vx2/action_prepare_vex2.h"

#include "Plugins/Vx2/host/uvw_test.h"
#include "Plugins/Vx2/text.h"
#include "mesh/prepare.h"
#include "scene/buffer.h"
#include "scene/scene.h"

#include <cassert>

using VEX2_LOADER::VEX2;
using VEX2_LOADER::VEX2_READ_BUFFER;

ACTION_PREPARE_VEX2::ACTION_PREPARE_VEX2(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor)
    : ACTION_VEX2(physical, processor)
{}

ACTION_PREPARE_VEX2::~ACTION_PREPARE_VEX2() { delete scene; }

void ACTION_PREPARE_VEX2::reset()
{
    delete scene;
    scene = nullptr;
    ACTION_TDB::reset();
}

QString ACTION_PREPARE_VEX2::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Prepare vex2");
    return with_source ? name + " (" + source() + ")" : name;
}

ACTION_INTERFACE::STATUS ACTION_PREPARE_VEX2::run(FILE_TABLE const &, RULE_CACHE const &)
{
    set_up_tdb_output();
    assert(!scene);
    scene = new VEX2;  // before the file is touched, so that the clean-up finds a scene whatever happens

    add_output_line(QStringLiteral("Loading vex2..."));
    {
        VEX2_READ_BUFFER buffer(KN::must_fix_string_widen(local_8_bit(source())));
        if (buffer.cursor >= buffer.end) {
            output_line("Failed to open '" + source() + "' for reading!", 2);
            return FAILED;
        }
        if (!scene->load(buffer, true)) {
            output_line("Failed to load vex2 file '" + source() + "'!", 2);
            return FAILED;
        }
    }
    scene->seek(0.0f);
    if (!add_progress(400))
        return FAILED;

    add_output_line(QStringLiteral("Testing uvws..."));
    KN::UniString message;
    TOOLDATABUILDER::test_vex2_uvws(*scene, message);
    if (!message.empty()) {
        output_line(QString::fromUtf16(message.data(), int(message.size())), 2);
        return FAILED;
    }

    add_output_line(QStringLiteral("Removing duplicate vertices..."));
    VEX2_LOADER::remove_duplicates(*scene, VEX2_LOADER::prepare_duplicate_options);
    if (!add_progress(300))
        return FAILED;

    add_output_line(QStringLiteral("Generating binormals and tangents..."));
    VEX2_LOADER::generate_frames(*scene, VEX2_LOADER::prepare_frame_options);
    add_progress(300);
    return get_status_by_output();
}
