// Rich text as MAPI stores it: compressed, or as it stands ([MS-OXRTFCP]).
#pragma once

#include "codec/ByteSink.h"
#include "codec/FileBytes.h"

namespace quillon {

// False when it is not all there, or its checksum says that it was changed; what could be read has
// gone to the sink.
bool DecompressRtf(FileBytes bytes, ByteSink& sink);

}  // namespace quillon
