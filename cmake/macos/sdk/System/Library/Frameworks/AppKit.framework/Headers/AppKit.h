// What the list of mounted volumes takes from AppKit, so that it compiles where no AppKit is. On a
// Mac the real header is used and this one is not in sight.
#import <objc/NSObject.h>

typedef struct {
    unsigned long state;
    id __unsafe_unretained* itemsPtr;
    unsigned long* mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)length;
@end

@interface NSString : NSObject
@property(readonly) const char* UTF8String;
@end

@interface NSArray<Item> : NSObject <NSFastEnumeration>
@end

@interface NSWorkspace : NSObject
@property(class, readonly) NSWorkspace* sharedWorkspace;
- (NSArray<NSString*>*)mountedLocalVolumePaths;
@end
