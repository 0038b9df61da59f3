#pragma once

#include "zephmetadata/definitions.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/extensions.h"
#include "zephmetadata/formatting.h"
#include "zephmetadata/library.h"
#include "zephmetadata/media.h"
#include "zephmetadata/paths.h"
#include "zephmetadata/providers.h"
#include "zephmetadata/source_provider.h"
#include "zephmetadata/values.h"
#include "zephmetadata/views.h"
#include "zephmetadata/xmp_meta.h"
