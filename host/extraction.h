/// One run of the plug-in, in the order of calls that it needs.
#pragma once

#include "core/mail.h"
#include "host/run_request.h"

struct extraction_outcome
{
    bool interrupted = false;
    double seconds = 0.0;
};

/// Drives a fresh plug-in object through the whole run; the places of the request exist. Shows progress meanwhile and
/// heeds interrupts. The plug-in's failures stand in the log.
extraction_outcome extract(mail &plugin, const run_request &request);
