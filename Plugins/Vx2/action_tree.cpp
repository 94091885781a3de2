#include "Plugins/Vx2/action_tree.h"

ACTION_TREE::ACTION_TREE(PHYSICAL_PATH const &model, PROCESSOR_INTERFACE *processor, ACTION_INIT_KESTREL *,
                         FILE_TABLE const &)
    : ACTION_CONVERT(model, processor)
{}

bool ACTION_TREE::slot_used(int slot) const { return slot == WHOLE_YEAR; }

QString ACTION_TREE::image_base(int) const
{
    return source().section('/', 0, -2) + "/" + source().section('.', -2, -2).section('/', -1) + "_billboard";
}

bool ACTION_TREE::convert(PHYSICAL_PATH const &, PHYSICAL_PATH const &, RULE_CACHE const &, FILE_TABLE const &)
{
    output_line(QStringLiteral("Tree billboards are not built yet."), 2);
    return false;
}
