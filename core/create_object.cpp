// The one entry of the library. The version script beside this file keeps every other symbol inside.
#include "core/mail.h"

extern "C" Q_DECL_EXPORT mail *create_object()
{
    return new mail;
}
