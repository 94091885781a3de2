// The forms in which rule properties are read, beside QVariant's own. Each property has its form; they differ on texts
// such as "yes" and on absent values.
#pragma once

#include <QtCore/QString>
#include <QtCore/QVariant>

// True for "true", without regard to case, and "1". QVariant::toBool takes most other texts for true as well.
inline bool flag_text(QVariant const &value)
{
    QString const text = value.toString();
    return text == QLatin1String("1") || text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
}

constexpr float default_incendiary_radius = 2.0f;  // metres
