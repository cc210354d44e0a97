/// Short forms that the tests of the services, and of what stands above them, share.
#pragma once

#include "core/plugin_static_function.h"
#include "tests/support/short_forms.h"

using service = plugin_static_function;
using text_operation = QString (*)(const QString &);
Q_DECLARE_METATYPE(text_operation)
