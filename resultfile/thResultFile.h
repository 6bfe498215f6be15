// Result file object (placeholder until the result-file reader lands).
#pragma once
#include "support/VCppLib.h"
