#include "macos/gnustep/FixedVolumes.h"

#include <utility>

#import <AppKit/AppKit.h>

namespace {

std::vector<std::string> fixedVolumes;
gnustep::Lookups lookups;

} // namespace

// Lives as long as the autoreleased objects of one lookup.
@interface LookupWitness : NSObject
@end

@implementation LookupWitness
- (void)dealloc {
    ++lookups.released;
    [super dealloc];
}
@end

@interface NSWorkspace (FixedVolumes)
@end

@implementation NSWorkspace (FixedVolumes)
- (NSArray*)mountedLocalVolumePaths {
    ++lookups.made;
    [[[LookupWitness alloc] init] autorelease];
    NSMutableArray* paths = [NSMutableArray array];
    for (const std::string& volume : fixedVolumes) {
        [paths addObject:[NSString stringWithUTF8String:volume.c_str()]];
    }
    return paths;
}
@end

namespace gnustep {

void setFixedVolumes(std::vector<std::string> volumes) {
    fixedVolumes = std::move(volumes);
}

Lookups fixedVolumeLookups() {
    return lookups;
}

} // namespace gnustep
