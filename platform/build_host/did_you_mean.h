// "; did you mean 'NAME'?" with the known name that is nearest to a misspelt one; empty if none is near.
#pragma once

#include "platform/build_host/api.h"

#include <QtCore/QStringList>

BUILD_HOST_API QString did_you_mean(QString const &misspelt, QStringList const &known);
