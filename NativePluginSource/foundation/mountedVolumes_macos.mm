#include "foundation/mountedVolumes.h"

#import <AppKit/AppKit.h>

namespace QVR {

std::vector<std::string> mountedVolumes() {
    std::vector<std::string> volumes;
    // The host may call from a thread that has no pool of its own.
    @autoreleasepool {
        for (NSString* path in [[NSWorkspace sharedWorkspace] mountedLocalVolumePaths]) {
            volumes.emplace_back([path UTF8String]);
        }
    }
    return volumes;
}

} // namespace QVR
