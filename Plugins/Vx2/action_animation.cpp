#include "Plugins/Vx2/action_animation.h"

#include "Plugins/Vx2/host/animation_processor.h"
#include "Plugins/Vx2/host/rule_values.h"
#include "Plugins/Vx2/text.h"

ACTION_ANIMATION::ACTION_ANIMATION(PHYSICAL_PATH const &physical, PROCESSOR_INTERFACE *processor, QString const &type,
                                   QString const &translations, QString const &rotations, float rate, bool reference,
                                   bool rigid)
    : ACTION_VEX2(physical, processor), animation_type(type), strip_translations(translations),
      strip_rotations(rotations), fps(rate), reference_pose(reference), rigid_reference(rigid)
{
    set_target_extension(QStringLiteral(".anim"));
}

ACTION_ANIMATION::ACTION_ANIMATION(ACTION_ANIMATION const &other) = default;
ACTION_ANIMATION::~ACTION_ANIMATION() = default;

// The file's name up to its last dot.
static QString stem_of(QString path)
{
    QString const name = path.replace('\\', '/').section('/', -1);
    return name.left(name.lastIndexOf('.'));
}

static PHYSICAL_PATH bone_matrices_of(PHYSICAL_PATH const &path)
{
    return PHYSICAL_PATH(path.left(path.lastIndexOf('.')) + ".bone_inv_trans_mats");
}

void ACTION_ANIMATION::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                          FILE_TABLE const &files, RULE_CACHE const &rules) const
{
    ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);
    if (reference_pose) {
        PHYSICAL_PATH const matrices = bone_matrices_of(targets.first().physical);
        targets.append(TARGET_FILE(matrices, PATHS::logical_path(matrices), false));
        return;
    }
    LOGICAL_PATH const skeletons(QStringLiteral("<raw>/animations/skeletons/"));
    for (auto entry = files.lowerBound(skeletons); entry != files.end() && entry.key().startsWith(skeletons); ++entry)
        sources.append(entry.key());
}

bool ACTION_ANIMATION::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                               FILE_TABLE const &files)
{
    KN::String translations, rotations;
    QString skeleton = animation_type;
    PHYSICAL_PATH bone_matrices;
    if (reference_pose) {
        if (skeleton.isEmpty())
            skeleton = stem_of(from);
        bone_matrices = bone_matrices_of(to);
    } else {
        translations = local_8_bit(strip_translations);
        rotations = local_8_bit(strip_rotations);
    }
    bool const debug = should_output_debug_animation_info(rules);
    bool const made = TOOLDATABUILDER::ANIMATION_PROCESSOR::convert_vex2(
        true, wide(from), wide(to), wide(bone_matrices), wide(skeleton), translations, rotations, fps, reference_pose,
        rigid_reference, debug);
    if (made && reference_pose)
        add_to_perforce(bone_matrices, files, true, QString());
    return made;
}
