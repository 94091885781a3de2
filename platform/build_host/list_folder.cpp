#include "platform/build_host/list_folder.h"

#include "Plugins/Vx2/host/file_table.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

bool list_folder(std::string const &folder, bool with_times, std::vector<LISTED> &entries, int &error)
{
    DIR *const stream = opendir(folder.c_str());
    if (!stream) {
        error = errno;
        return false;
    }
    int const handle = dirfd(stream);
    while (dirent const *const found = readdir(stream)) {
        if (found->d_name[0] == '.')
            continue;
        QString const name = QString::fromUtf8(found->d_name);
        if (name.contains(QChar::ReplacementCharacter))
            continue;
        if (found->d_type == DT_DIR) {
            entries.push_back({name, true, 0, 0});
            continue;
        }
        if (found->d_type == DT_REG && !with_times) {
            entries.push_back({name, false, FILE_ENTRY::not_asked, 0});
            continue;
        }
        if (found->d_type != DT_REG && found->d_type != DT_LNK && found->d_type != DT_UNKNOWN)
            continue;
        struct stat facts;
        if (fstatat(handle, found->d_name, &facts, 0) != 0)
            continue;  // gone meanwhile, or a link to nowhere
        if (S_ISREG(facts.st_mode))
            entries.push_back({name, false, facts.st_size, facts.st_mtim.tv_sec * 1000000000 + facts.st_mtim.tv_nsec});
        else if (S_ISDIR(facts.st_mode) && found->d_type == DT_UNKNOWN)
            entries.push_back({name, true, 0, 0});  // a file system that does not tell
    }
    closedir(stream);
    return true;
}
