// Texts on their way from Qt to the libraries that work on bytes and on UTF-16 units.
#pragma once

#include "foundation/string.h"

#include <QtCore/QString>

// In the local 8-bit encoding, that of file names on this system.
inline KN::String local_8_bit(QString const &text)
{
    QByteArray const bytes = text.toLocal8Bit();
    return KN::String(bytes.constData(), std::size_t(bytes.size()));
}

// Unit for unit.
inline KN::UniString wide(QString const &text)
{
    return KN::UniString(reinterpret_cast<char16_t const *>(text.utf16()), std::size_t(text.size()));
}
