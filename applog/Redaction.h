// Tells which messages the log replaces.

#pragma once

#include "logging/LineFormat.h"

// Whether the log replaces a message because it may contain an access token.
using tarn::containsToken;
