// One folder of the disk, listed with what a build needs to know of each file.
#pragma once

#include <QtCore/QString>

#include <string>
#include <vector>

struct LISTED {
    QString name;
    bool is_folder;
    qint64 size;  // bytes, or FILE_ENTRY::not_asked; 0 for folders
    qint64 time;  // last change, nanoseconds since 1970; 0 for folders
};

// Regular files, also those behind links, and folders that are no links; whatever else stands there is passed over, and
// so are names that begin with "." or are no UTF-8. False if the folder cannot be read; `error` is then the system's
// number. Without `with_times`, sizes and times are asked only where the system does not say what is a file.
bool list_folder(std::string const &folder, bool with_times, std::vector<LISTED> &entries, int &error);
