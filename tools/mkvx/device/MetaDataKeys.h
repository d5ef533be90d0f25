// The keys that the plug-in and a device's decoders share beyond the framework's list.
#pragma once
#include "matroska/MetaDataKeys.h"
