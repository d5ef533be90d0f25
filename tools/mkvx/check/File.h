// The examination of one file: what a device would do with it, and why.
//
// It opens the file, reads every unit and runs whatever the file makes the plug-in do: call it in a child
// process (Child.h) with a time limit. One thread.
#pragma once
#include <functional>
#include <memory>
#include <string>

#include "check/Decoders.h"
#include "check/Model.h"
#include "device/Plugin.h"
#include "source/Options.h"

namespace mkvx {

// Gets how many bytes more were gone through. All calls together come to about twice the file's size.
using OnBytes = std::function<void(uint64_t bytes)>;

struct CheckDepth {
    bool units = true;  // read all units and account for all bytes; else only what opening tells
    OnBytes onBytes;    // may be empty
    std::shared_ptr<const DecoderMeasure> decoders;  // null: the era's
};

// `soFar` gets the result as it stands before the long part, for the case that this does not come to its end.
// Does not throw for anything about the file.
CheckedFile examine(const ExtractorPlugin& plugin, const std::string& path, const SourceOptions& source,
                    const CheckDepth& depth, const std::function<void(const CheckedFile&)>& soFar);

// It is offered, and no finding says that nothing useful comes out of it.
bool plays(const TrackVerdict& track);

// Draws the verdict and its reason from what was found.
void decide(CheckedFile& checked);

}  // namespace mkvx
