// Declared anew from the public documentation, see Foundation.h.
#pragma once

#include <Foundation/Foundation.h>

@interface CALayer : NSObject {
    CFTypeRef contents_;
    CGFloat contentsScale_;
    CGFloat cornerRadius_;
    BOOL masksToBounds_;
}
@property(nonatomic) id contents;
@property(nonatomic) CGFloat contentsScale;
@property(nonatomic) CGFloat cornerRadius;
@property(nonatomic) BOOL masksToBounds;
@end
