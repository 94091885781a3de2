// What the fragment actions of assets in XML have in common: names, files, and the reading of their small documents.
#pragma once

#include "Plugins/Vx2/host/action.h"

#include <QtXml/QDomDocument>

#include <vector>

// "NAME", or "NAME (ASSET)" with the source.
QString fragment_action_name(QString const &name, QString const &asset, bool with_source);

// One source and the AGF file that comes of it.
void append_fragment_files(LOGICAL_PATH const &source, PHYSICAL_PATH const &agf, QVector<LOGICAL_PATH> &sources,
                           QVector<TARGET_FILE> &targets);

// Reads the XML file that `files` has under `logical`: up to 16 MiB, and 256 elements within each other. Several
// elements at its top are taken too. False, with an error line of `action`, for a file that is not so.
class XML_ASSET {
public:
    bool read(ACTION_INTERFACE &action, LOGICAL_PATH const &logical, FILE_TABLE const &files);

    // What the elements at the top are children of.
    QDomNode const &top() const { return above_top; }

private:
    QDomDocument document;
    QDomNode above_top;
};

// The elements at the end of a chain of names that begins below `from`, in the order of the file.
std::vector<QDomElement> children(QDomNode const &from, std::initializer_list<char const *> names);

// An element's text as a path: in lower case, with slashes.
QString path_in(QDomElement const &element);
