/// What tells one generation of the mail index from another when its messages are extracted.
#pragma once

#include "macos/mail_macos.h"

#include <vector>

struct mail_macos::message_layout
{
    operation_log log;
    failure_text destination_open_failure;
    failure_text source_open_failure;
    std::vector<const char *> selects; ///< by generation; the first that executes is the index's own
    failure_text select_failure;
    const char *insert;
    failure_text insert_failure;
    row_maker (mail_macos::*maker)(const message_index &index, source_session &index_session,
                                   result_session &destination, emlx_catalog &mail_files) const;
};
