/// The readers of the communications store, one for each of its tables.
#pragma once

#include "windows/appointments.h"
#include "windows/attachments.h"
#include "windows/call_history.h"
#include "windows/contacts.h"
#include "windows/messages.h"
#include "windows/recipients.h"
