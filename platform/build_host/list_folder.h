// One folder of the disk, listed with what a build needs to know of each file.
#pragma once

#include <QtCore/QString>

#include <string>
#include <vector>

struct LISTED {
    QString name;
    bool is_folder;
    qint64 size;  // bytes; 0 for folders
    qint64 time;  // last change, nanoseconds since 1970; 0 for folders
};

// Regular files, also those behind links, and folders that are no links; whatever else stands there is passed over, and
// so are names that begin with "." or are no UTF-8. False if the folder cannot be read; `error` is then the system's
// number.
bool list_folder(std::string const &folder, std::vector<LISTED> &entries, int &error);
