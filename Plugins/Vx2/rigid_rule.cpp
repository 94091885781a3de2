#include "Plugins/Vx2/rigid_rule.h"

#include "Plugins/Vx2/rule_reading.h"

QString appended_sub_folder(QString text)
{
    if (text.isEmpty())
        return text;
    text.replace('\\', '/');
    int first = 0, last = text.size();
    while (first < last && text[first] == '/')
        ++first;
    while (last > first && text[last - 1] == '/')
        --last;
    return "/" + text.mid(first, last - first);
}

static QString with_dot(QString const &extension)
{
    return extension.isEmpty() || extension.startsWith('.') ? extension : "." + extension;
}

RIGID_RULE::RIGID_RULE(RULE const &rule)
{
    QVariant const target = rule.value(QStringLiteral("TargetPath"));
    has_target = target.isValid();
    if (!has_target)
        return;
    is_target_null = target.isNull();
    has_textures = !rule.value(QStringLiteral("TextureFolder")).isNull();
    if (has_textures)
        texture_sub_folder = appended_sub_folder(rule.value(QStringLiteral("TextureSubFolder")).toString());

    QVariant const type = rule.value(QStringLiteral("AnimationType"));
    animation_type = type.toString();
    has_reference_pose = rule.value(QStringLiteral("ExportTechFiles")).toBool() && !type.isNull();
    if (has_reference_pose)
        reference_pose_folder = appended_sub_folder(rule.value(QStringLiteral("TechSubFolder")).toString());

    single_lod = flag_text(rule.value(QStringLiteral("SingleLOD")));
    extension = with_dot(rule.value(QStringLiteral("TargetExtension")).toString().trimmed());
    tree = rule.value(QStringLiteral("Tree")).toBool();
    update_database = has_textures && flag_text(rule.value(QStringLiteral("UpdateDatabase")));
    if (update_database)
        category = rule.value(QStringLiteral("RigidCategory")).toString();
}
