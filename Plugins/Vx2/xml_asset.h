// What the fragment actions of finished assets have in common: names and files, and, for those of assets in XML, the
// run from the reading of a small document to the saved fragment.
#pragma once

#include "Plugins/Vx2/host/action.h"

#include <QtXml/QDomDocument>

#include <functional>
#include <vector>

// "NAME", or "NAME (ASSET)" with the source.
QString fragment_action_name(QString const &name, QString const &asset, bool with_source);

// One source and the AGF file that comes of it.
void append_fragment_files(LOGICAL_PATH const &source, PHYSICAL_PATH const &agf, QVector<LOGICAL_PATH> &sources,
                           QVector<TARGET_FILE> &targets);

// The elements at the end of a chain of names that begins below `from`, in the order of the file.
std::vector<QDomElement> children(QDomNode const &from, std::initializer_list<char const *> names);

// An element's text as a path: in lower case, with slashes.
QString path_in(QDomElement const &element);

// The run of a fragment action of an asset in XML. The fragment's id is the asset's path below its root up to the
// '.'-section `last_section`, counted from the end as -1; it depends on the ids that `needed_by` finds in the document,
// whose top-level elements are the children of the node, and of which empty ones count for nothing.
//
// The file is the one that `files` has under `logical`: up to 16 MiB, and 256 elements within each other. Several
// elements at its top are taken too. FAILED, with an error line of `action`, for a file that is not so.
ACTION_INTERFACE::STATUS make_xml_fragment(ACTION_INTERFACE &action, LOGICAL_PATH const &logical,
                                           PHYSICAL_PATH const &agf, int last_section, FILE_TABLE const &files,
                                           RULE_CACHE const &rules,
                                           std::function<QStringList(QDomNode const &)> const &needed_by);
