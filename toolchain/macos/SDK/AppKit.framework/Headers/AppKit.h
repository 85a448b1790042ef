// The part of AppKit that this project calls.
#pragma once

#import <Foundation/Foundation.h>
#include <TargetConditionals.h>

#pragma clang assume_nonnull begin

@class NSApplication, NSEvent, NSGridCell, NSMenu, NSStatusBarButton, NSView, NSWindow;

typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) {
    NSApplicationActivationPolicyRegular,
    NSApplicationActivationPolicyAccessory,
    NSApplicationActivationPolicyProhibited,
};

typedef NS_ENUM(NSUInteger, NSEventType) {
    NSEventTypeLeftMouseDown = 1,
    NSEventTypeLeftMouseUp = 2,
    NSEventTypeRightMouseDown = 3,
    NSEventTypeRightMouseUp = 4,
    NSEventTypeMouseMoved = 5,
};

typedef NS_OPTIONS(unsigned long long, NSEventMask) {
    NSEventMaskLeftMouseUp = 1ULL << NSEventTypeLeftMouseUp,
    NSEventMaskRightMouseUp = 1ULL << NSEventTypeRightMouseUp,
};

typedef NS_OPTIONS(NSUInteger, NSEventModifierFlags) {
    NSEventModifierFlagShift = 1 << 17,
    NSEventModifierFlagControl = 1 << 18,
    NSEventModifierFlagOption = 1 << 19,
    NSEventModifierFlagCommand = 1 << 20,
};

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask) {
    NSWindowStyleMaskTitled = 1 << 0,
    NSWindowStyleMaskClosable = 1 << 1,
};

typedef NS_ENUM(NSUInteger, NSBackingStoreType) {
    NSBackingStoreBuffered = 2,
};

typedef NS_ENUM(NSInteger, NSWindowTitleVisibility) {
    NSWindowTitleVisible = 0,
    NSWindowTitleHidden = 1,
};

typedef NS_OPTIONS(NSUInteger, NSStatusItemBehavior) {
    NSStatusItemBehaviorRemovalAllowed = 1 << 1,
    NSStatusItemBehaviorTerminationOnRemoval = 1 << 2,
};

typedef NS_ENUM(NSUInteger, NSLineCapStyle) {
    NSLineCapStyleButt = 0,
    NSLineCapStyleRound = 1,
    NSLineCapStyleSquare = 2,
};

typedef NS_ENUM(NSUInteger, NSBezelStyle) {
    NSBezelStyleRounded = 1,
};

typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;

typedef NS_ENUM(NSInteger, NSUserInterfaceLayoutOrientation) {
    NSUserInterfaceLayoutOrientationHorizontal = 0,
    NSUserInterfaceLayoutOrientationVertical = 1,
};

typedef NS_ENUM(NSInteger, NSLayoutAttribute) {
    NSLayoutAttributeLeading = 5,
    NSLayoutAttributeCenterX = 9,
};

typedef NS_ENUM(NSInteger, NSGridCellPlacement) {
    NSGridCellPlacementInherited = 0,
    NSGridCellPlacementLeading = 2,
    NSGridCellPlacementTrailing = 3,
};

typedef NS_ENUM(NSInteger, NSGridRowAlignment) {
    NSGridRowAlignmentNone = 1,
    NSGridRowAlignmentFirstBaseline = 2,
};

typedef NS_ENUM(NSUInteger, NSDatePickerStyle) {
    NSDatePickerStyleTextFieldAndStepper = 0,
};

typedef NS_OPTIONS(NSUInteger, NSDatePickerElementFlags) {
    NSDatePickerElementFlagHourMinute = 0x000c,
};

typedef NS_ENUM(NSInteger, NSTextAlignment) {
    NSTextAlignmentLeft = 0,
};
// Two enumerators whose values depend on the processor: 2 and 1 on Intel, 1 and 2 elsewhere.
#define NSTextAlignmentCenter (TARGET_CPU_X86_64 ? NSTextAlignment(2) : NSTextAlignment(1))
#define NSTextAlignmentRight (TARGET_CPU_X86_64 ? NSTextAlignment(1) : NSTextAlignment(2))

typedef CGFloat NSFontWeight;
extern "C" {
extern const NSFontWeight NSFontWeightRegular;
extern const NSFontWeight NSFontWeightSemibold;
extern NSNotificationName const NSWorkspaceDidWakeNotification;
}

@interface NSResponder : NSObject
@end

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows;
- (void)applicationWillTerminate:(NSNotification*)notification;
@end

@interface NSApplication : NSResponder
+ (NSApplication*)sharedApplication;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (NSApplicationActivationPolicy)activationPolicy;
- (void)setDelegate:(nullable id<NSApplicationDelegate>)delegate;
- (void)run;
- (void)terminate:(nullable id)sender;
- (nullable NSEvent*)currentEvent;
- (NSArray<NSWindow*>*)windows;
- (void)activateIgnoringOtherApps:(BOOL)ignoring;
@end

@interface NSWorkspace : NSObject
+ (NSWorkspace*)sharedWorkspace;
- (NSNotificationCenter*)notificationCenter;
@end

@interface NSEvent : NSObject
+ (NSUInteger)pressedMouseButtons;
+ (NSEventModifierFlags)modifierFlags;
- (NSUInteger)type; // an NSEventType
- (NSEventModifierFlags)modifierFlags;
@end

@interface NSColor : NSObject
+ (NSColor*)colorWithCalibratedRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
+ (NSColor*)blackColor;
+ (NSColor*)labelColor;
+ (NSColor*)secondaryLabelColor;
+ (NSColor*)tertiaryLabelColor;
- (void)setFill;
- (void)setStroke;
- (CGFloat)redComponent;
- (CGFloat)greenComponent;
- (CGFloat)blueComponent;
- (CGFloat)alphaComponent;
@end

@interface NSFont : NSObject
+ (NSFont*)systemFontOfSize:(CGFloat)size;
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
+ (CGFloat)smallSystemFontSize;
- (CGFloat)pointSize;
@end

@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPath;
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect xRadius:(CGFloat)xRadius yRadius:(CGFloat)yRadius;
- (void)moveToPoint:(NSPoint)point;
- (void)curveToPoint:(NSPoint)end controlPoint1:(NSPoint)point1 controlPoint2:(NSPoint)point2;
- (void)appendBezierPathWithArcWithCenter:(NSPoint)center
                                   radius:(CGFloat)radius
                               startAngle:(CGFloat)startAngle
                                 endAngle:(CGFloat)endAngle
                                clockwise:(BOOL)clockwise;
- (void)transformUsingAffineTransform:(NSAffineTransform*)transform;
- (void)setLineWidth:(CGFloat)width;
- (void)setLineCapStyle:(NSLineCapStyle)style;
- (void)stroke;
- (void)fill;
@end

@interface NSImage : NSObject
+ (instancetype)imageWithSize:(NSSize)size flipped:(BOOL)flipped drawingHandler:(BOOL (^)(NSRect rect))drawingHandler;
- (NSSize)size;
- (void)setTemplate:(BOOL)isTemplate;
- (BOOL)isTemplate;
@end

@interface NSLayoutConstraint : NSObject
+ (void)activateConstraints:(NSArray<NSLayoutConstraint*>*)constraints;
- (CGFloat)constant;
- (BOOL)isActive;
@end

@interface NSLayoutAnchor<AnchorType> : NSObject
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor;
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor constant:(CGFloat)constant;
- (NSLayoutConstraint*)constraintGreaterThanOrEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor
                                                   constant:(CGFloat)constant;
- (NSLayoutConstraint*)constraintLessThanOrEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor constant:(CGFloat)constant;
@end

@interface NSLayoutXAxisAnchor : NSLayoutAnchor
@end

@interface NSLayoutYAxisAnchor : NSLayoutAnchor
@end

@interface NSLayoutDimension : NSLayoutAnchor
- (NSLayoutConstraint*)constraintEqualToConstant:(CGFloat)constant;
@end

@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frame;
- (void)addSubview:(NSView*)view;
- (void)setTranslatesAutoresizingMaskIntoConstraints:(BOOL)translates;
- (BOOL)translatesAutoresizingMaskIntoConstraints;
- (NSLayoutXAxisAnchor*)leadingAnchor;
- (NSLayoutXAxisAnchor*)trailingAnchor;
- (NSLayoutXAxisAnchor*)centerXAnchor;
- (NSLayoutYAxisAnchor*)topAnchor;
- (NSLayoutYAxisAnchor*)bottomAnchor;
- (NSLayoutDimension*)widthAnchor;
- (NSLayoutDimension*)heightAnchor;
- (NSSize)fittingSize;
- (void)setToolTip:(nullable NSString*)text;
- (nullable NSString*)toolTip;
@end

@interface NSControl : NSView
- (void)setTarget:(nullable id)target;
- (void)setAction:(nullable SEL)action;
- (void)setEnabled:(BOOL)enabled;
- (BOOL)isEnabled;
- (NSInteger)sendActionOn:(NSEventMask)mask;
- (void)performClick:(nullable id)sender;
- (void)setStringValue:(NSString*)text;
- (NSString*)stringValue;
- (void)setFont:(nullable NSFont*)font;
- (nullable NSFont*)font;
- (void)setAlignment:(NSTextAlignment)alignment;
- (NSTextAlignment)alignment;
@end

@interface NSButton : NSControl
+ (instancetype)buttonWithTitle:(NSString*)title target:(nullable id)target action:(nullable SEL)action;
+ (instancetype)radioButtonWithTitle:(NSString*)title target:(nullable id)target action:(nullable SEL)action;
- (NSString*)title;
- (void)setImage:(nullable NSImage*)image;
- (nullable NSImage*)image;
- (void)setState:(NSControlStateValue)state;
- (NSControlStateValue)state;
- (void)setBezelStyle:(NSBezelStyle)style;
- (NSBezelStyle)bezelStyle;
- (void)setKeyEquivalent:(NSString*)key;
- (NSString*)keyEquivalent;
@end

@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString*)text;
+ (instancetype)wrappingLabelWithString:(NSString*)text;
- (void)setTextColor:(nullable NSColor*)color;
- (nullable NSColor*)textColor;
- (void)setPreferredMaxLayoutWidth:(CGFloat)width;
- (CGFloat)preferredMaxLayoutWidth;
@end

@interface NSImageView : NSControl
+ (instancetype)imageViewWithImage:(NSImage*)image;
- (nullable NSImage*)image;
@end

@interface NSStackView : NSView
+ (instancetype)stackViewWithViews:(NSArray<NSView*>*)views;
- (NSArray<NSView*>*)arrangedSubviews;
- (void)setOrientation:(NSUserInterfaceLayoutOrientation)orientation;
- (NSUserInterfaceLayoutOrientation)orientation;
- (void)setAlignment:(NSLayoutAttribute)alignment;
- (NSLayoutAttribute)alignment;
- (void)setSpacing:(CGFloat)spacing;
- (CGFloat)spacing;
- (void)setCustomSpacing:(CGFloat)spacing afterView:(NSView*)view;
- (CGFloat)customSpacingAfterView:(NSView*)view;
- (void)setEdgeInsets:(NSEdgeInsets)insets;
- (NSEdgeInsets)edgeInsets;
@end

@interface NSGridRow : NSObject
- (NSGridCell*)cellAtIndex:(NSInteger)index;
- (void)setHidden:(BOOL)hidden;
- (BOOL)isHidden;
- (void)mergeCellsInRange:(NSRange)range;
@end

@interface NSGridColumn : NSObject
- (void)setXPlacement:(NSGridCellPlacement)placement;
- (NSGridCellPlacement)xPlacement;
@end

@interface NSGridCell : NSObject
+ (NSView*)emptyContentView;
- (nullable NSView*)contentView;
- (nullable NSGridRow*)row;
- (void)setXPlacement:(NSGridCellPlacement)placement;
- (NSGridCellPlacement)xPlacement;
@end

@interface NSGridView : NSView
+ (instancetype)gridViewWithViews:(NSArray<NSArray<NSView*>*>*)rows;
- (NSInteger)numberOfRows;
- (NSInteger)numberOfColumns;
- (NSGridRow*)rowAtIndex:(NSInteger)index;
- (NSGridColumn*)columnAtIndex:(NSInteger)index;
- (nullable NSGridCell*)cellForView:(NSView*)view;
- (void)setRowSpacing:(CGFloat)spacing;
- (CGFloat)rowSpacing;
- (void)setColumnSpacing:(CGFloat)spacing;
- (CGFloat)columnSpacing;
- (void)setRowAlignment:(NSGridRowAlignment)alignment;
- (NSGridRowAlignment)rowAlignment;
@end

@interface NSSwitch : NSControl
- (void)setState:(NSControlStateValue)state;
- (NSControlStateValue)state;
@end

@interface NSDatePicker : NSControl
- (void)setDatePickerStyle:(NSDatePickerStyle)style;
- (NSDatePickerStyle)datePickerStyle;
- (void)setDatePickerElements:(NSDatePickerElementFlags)elements;
- (NSDatePickerElementFlags)datePickerElements;
- (void)setDateValue:(NSDate*)date;
- (NSDate*)dateValue;
@end

@interface NSPopUpButton : NSButton
- (instancetype)initWithFrame:(NSRect)frame pullsDown:(BOOL)pullsDown;
- (void)addItemsWithTitles:(NSArray<NSString*>*)titles;
- (NSArray<NSString*>*)itemTitles;
- (void)selectItemAtIndex:(NSInteger)index;
- (NSInteger)indexOfSelectedItem;
@end

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer;
- (NSWindowStyleMask)styleMask;
- (void)setReleasedWhenClosed:(BOOL)released;
- (BOOL)isReleasedWhenClosed;
- (void)setTitle:(NSString*)title;
- (NSString*)title;
- (void)setTitleVisibility:(NSWindowTitleVisibility)visibility;
- (NSWindowTitleVisibility)titleVisibility;
- (void)setTitlebarAppearsTransparent:(BOOL)transparent;
- (BOOL)titlebarAppearsTransparent;
- (void)setContentView:(nullable NSView*)view;
- (nullable NSView*)contentView;
- (void)setContentSize:(NSSize)size;
- (NSRect)frame;
- (void)center;
- (void)makeKeyAndOrderFront:(nullable id)sender;
- (void)orderFrontRegardless;
- (void)orderOut:(nullable id)sender;
- (BOOL)isVisible;
@end

@interface NSMenuItem : NSObject
- (instancetype)initWithTitle:(NSString*)title action:(nullable SEL)action keyEquivalent:(NSString*)key;
+ (NSMenuItem*)separatorItem;
- (void)setTarget:(nullable id)target;
- (void)setAction:(nullable SEL)action;
- (BOOL)isSeparatorItem;
- (NSString*)title;
- (NSString*)keyEquivalent;
- (NSEventModifierFlags)keyEquivalentModifierMask;
- (void)setEnabled:(BOOL)enabled;
- (BOOL)isEnabled;
@end

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)item;
- (NSInteger)numberOfItems;
- (nullable NSMenuItem*)itemAtIndex:(NSInteger)index;
- (void)performActionForItemAtIndex:(NSInteger)index;
@end

@interface NSStatusBarButton : NSButton
@end

@interface NSStatusItem : NSObject
- (CGFloat)length;
- (void)setBehavior:(NSStatusItemBehavior)behavior;
- (NSStatusItemBehavior)behavior;
- (nullable NSStatusBarButton*)button;
- (void)setMenu:(nullable NSMenu*)menu;
- (nullable NSMenu*)menu;
@end

@interface NSStatusBar : NSObject
+ (NSStatusBar*)systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
@end

#pragma clang assume_nonnull end
