// The name under which the system knows a path: UTF-8 bytes, backslashes turned where the slash separates.
#pragma once

#include "foundation/file.h"

#include <QtCore/QString>

inline KN::String disk_name(QString const &path)
{
    QByteArray const bytes = path.toUtf8();
    return KN::disk_path(KN::String(std::string_view(bytes.constData(), std::size_t(bytes.size()))));
}
