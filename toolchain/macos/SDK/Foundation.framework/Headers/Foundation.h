// The part of Foundation that this project calls.
#pragma once

#import <CoreFoundation/CoreFoundation.h>
#import <objc/NSObject.h>

#define NS_ENUM(_type, _name) CF_ENUM(_type, _name)
#define NS_OPTIONS(_type, _name)                                                                                       \
    _type _name;                                                                                                       \
    enum : _name
#define NS_FORMAT_FUNCTION(F, A) __attribute__((format(__NSString__, F, A)))

#pragma clang assume_nonnull begin

@class NSData, NSError, NSURL;

typedef NSString* NSFileAttributeKey;
typedef NSString* NSNotificationName;
typedef NSString* NSRunLoopMode;
typedef NSUInteger NSJSONReadingOptions;
typedef NSUInteger NSStringEncoding;
typedef double NSTimeInterval;

enum : NSStringEncoding {
    NSUTF8StringEncoding = 4,
    NSISOLatin1StringEncoding = 5,
};

typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;
typedef struct NSEdgeInsets {
    CGFloat top;
    CGFloat left;
    CGFloat bottom;
    CGFloat right;
} NSEdgeInsets;
typedef struct _NSRange {
    NSUInteger location;
    NSUInteger length;
} NSRange;

typedef NS_ENUM(NSUInteger, NSURLRequestCachePolicy) {
    NSURLRequestUseProtocolCachePolicy = 0,
    NSURLRequestReloadIgnoringLocalCacheData = 1,
};

typedef NS_OPTIONS(NSUInteger, NSCalendarUnit) {
    NSCalendarUnitHour = 32,
    NSCalendarUnitMinute = 64,
};

typedef NS_OPTIONS(NSUInteger, NSCalendarOptions) {
    NSCalendarMatchNextTime = 1 << 10,
    NSCalendarMatchFirst = 1 << 12,
};

extern "C" {
extern NSFileAttributeKey const NSFilePosixPermissions;
extern NSNotificationName const NSSystemClockDidChangeNotification;
extern NSNotificationName const NSSystemTimeZoneDidChangeNotification;
extern NSRunLoopMode const NSRunLoopCommonModes;

void NSLog(NSString* format, ...) NS_FORMAT_FUNCTION(1, 2);
}

@interface NSString : NSObject
- (nullable instancetype)initWithData:(NSData*)data encoding:(NSStringEncoding)encoding;
- (BOOL)isEqualToString:(NSString*)other;
- (NSString*)lowercaseString;
- (nullable NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy;
- (BOOL)writeToURL:(NSURL*)url
        atomically:(BOOL)atomically
          encoding:(NSStringEncoding)encoding
             error:(NSError* _Nullable __autoreleasing* _Nullable)error;
@end

@interface NSData : NSObject
- (NSUInteger)length;
@end

@interface NSValue : NSObject
@end

@interface NSNumber : NSValue
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
- (BOOL)boolValue;
- (long long)longLongValue;
- (double)doubleValue;
@end

@interface NSArray<__covariant ObjectType> : NSObject
- (NSUInteger)count;
- (id)objectAtIndex:(NSUInteger)index;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)arrayWithCapacity:(NSUInteger)capacity;
- (void)addObject:(id)object;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject
- (nullable NSDictionary<KeyType, ObjectType>*)initWithContentsOfURL:(NSURL*)url;
- (NSArray<KeyType>*)allKeys;
- (nullable id)objectForKey:(id)key;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
+ (instancetype)dictionaryWithCapacity:(NSUInteger)capacity;
- (void)setObject:(id)object forKey:(id)key;
@end

@interface NSDate : NSObject
+ (instancetype)date;
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)seconds;
- (NSTimeInterval)timeIntervalSince1970;
@end

@interface NSDateComponents : NSObject
- (void)setHour:(NSInteger)hour;
- (void)setMinute:(NSInteger)minute;
- (void)setSecond:(NSInteger)second;
@end

@interface NSCalendar : NSObject
+ (NSCalendar*)currentCalendar;
- (NSInteger)component:(NSCalendarUnit)unit fromDate:(NSDate*)date;
- (nullable NSDate*)nextDateAfterDate:(NSDate*)date
                   matchingComponents:(NSDateComponents*)components
                              options:(NSCalendarOptions)options;
- (nullable NSDate*)dateBySettingHour:(NSInteger)hour
                               minute:(NSInteger)minute
                               second:(NSInteger)second
                               ofDate:(NSDate*)date
                              options:(NSCalendarOptions)options;
@end

@interface NSTimer : NSObject
- (instancetype)initWithFireDate:(NSDate*)date
                        interval:(NSTimeInterval)interval
                         repeats:(BOOL)repeats
                           block:(void (^)(NSTimer* timer))block;
- (NSDate*)fireDate;
- (NSTimeInterval)timeInterval;
- (void)setTolerance:(NSTimeInterval)tolerance;
- (NSTimeInterval)tolerance;
- (void)invalidate;
- (BOOL)isValid;
@end

@interface NSRunLoop : NSObject
+ (NSRunLoop*)mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
@end

@interface NSThread : NSObject
+ (BOOL)isMainThread;
@end

@interface NSError : NSObject
- (NSString*)localizedDescription;
@end

@interface NSAffineTransform : NSObject
+ (NSAffineTransform*)transform;
- (void)translateXBy:(CGFloat)x yBy:(CGFloat)y;
- (void)scaleBy:(CGFloat)scale;
@end

@interface NSBundle : NSObject
+ (NSBundle*)mainBundle;
- (nullable NSString*)bundleIdentifier;
- (NSURL*)bundleURL;
- (nullable id)objectForInfoDictionaryKey:(NSString*)key;
@end

@interface NSLocale : NSObject
+ (NSArray<NSString*>*)preferredLanguages;
@end

@interface NSNotification : NSObject
- (NSNotificationName)name;
@end

@interface NSNotificationCenter : NSObject
+ (NSNotificationCenter*)defaultCenter;
- (id<NSObject>)addObserverForName:(nullable NSNotificationName)name
                            object:(nullable id)object
                             queue:(nullable id)queue
                        usingBlock:(void (^)(NSNotification* notification))block;
- (void)removeObserver:(id)observer;
- (void)postNotificationName:(NSNotificationName)name object:(nullable id)object;
@end

@interface NSURL : NSObject
+ (nullable instancetype)URLWithString:(NSString*)text;
+ (NSURL*)fileURLWithPath:(NSString*)path;
- (nullable NSString*)absoluteString;
- (nullable NSString*)scheme;
- (nullable NSString*)path;
- (nullable NSString*)pathExtension;
- (nullable NSURL*)URLByAppendingPathComponent:(NSString*)component;
- (nullable NSURL*)URLByDeletingLastPathComponent;
- (nullable NSURL*)URLByResolvingSymlinksInPath;
@end

@interface NSURLRequest : NSObject
+ (instancetype)requestWithURL:(NSURL*)url
                   cachePolicy:(NSURLRequestCachePolicy)cachePolicy
               timeoutInterval:(NSTimeInterval)timeoutInterval;
@end

@interface NSMutableURLRequest : NSURLRequest
- (void)setHTTPShouldHandleCookies:(BOOL)handles;
@end

@interface NSURLResponse : NSObject
- (nullable NSURL*)URL;
@end

@interface NSHTTPURLResponse : NSURLResponse
- (NSInteger)statusCode;
@end

@interface NSURLSessionTask : NSObject
- (void)resume;
@end

@interface NSURLSessionDataTask : NSURLSessionTask
@end

@interface NSURLSessionDownloadTask : NSURLSessionTask
@end

@interface NSURLSession : NSObject
+ (NSURLSession*)sharedSession;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request
                           completionHandler:(void (^)(NSData* _Nullable data, NSURLResponse* _Nullable response,
                                                       NSError* _Nullable error))handler;
- (NSURLSessionDownloadTask*)downloadTaskWithRequest:(NSURLRequest*)request
                                   completionHandler:(void (^)(NSURL* _Nullable location,
                                                               NSURLResponse* _Nullable response,
                                                               NSError* _Nullable error))handler;
@end

@interface NSJSONSerialization : NSObject
+ (nullable id)JSONObjectWithData:(NSData*)data
                          options:(NSJSONReadingOptions)options
                            error:(NSError* _Nullable __autoreleasing* _Nullable)error;
@end

@interface NSFileManager : NSObject
+ (NSFileManager*)defaultManager;
- (NSURL*)temporaryDirectory;
- (BOOL)fileExistsAtPath:(NSString*)path;
- (BOOL)isWritableFileAtPath:(NSString*)path;
- (nullable NSString*)destinationOfSymbolicLinkAtPath:(NSString*)path
                                                error:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (BOOL)removeItemAtURL:(NSURL*)url error:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (BOOL)moveItemAtURL:(NSURL*)source
                toURL:(NSURL*)destination
                error:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (BOOL)createDirectoryAtURL:(NSURL*)url
    withIntermediateDirectories:(BOOL)withIntermediateDirectories
                     attributes:(nullable NSDictionary<NSFileAttributeKey, id>*)attributes
                          error:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (BOOL)setAttributes:(NSDictionary<NSFileAttributeKey, id>*)attributes
         ofItemAtPath:(NSString*)path
                error:(NSError* _Nullable __autoreleasing* _Nullable)error;
@end

@interface NSProcessInfo : NSObject
+ (NSProcessInfo*)processInfo;
- (NSDictionary<NSString*, NSString*>*)environment;
- (int)processIdentifier;
@end

@interface NSUUID : NSObject
+ (instancetype)UUID;
- (NSString*)UUIDString;
@end

@interface NSFileHandle : NSObject
+ (NSFileHandle*)fileHandleWithNullDevice;
@end

@interface NSTask : NSObject
- (void)setExecutableURL:(nullable NSURL*)url;
- (void)setArguments:(nullable NSArray<NSString*>*)arguments;
- (void)setStandardOutput:(nullable id)output;
- (void)setStandardError:(nullable id)error;
- (BOOL)launchAndReturnError:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (void)waitUntilExit;
- (int)terminationStatus;
@end

@interface NSUserDefaults : NSObject
+ (NSUserDefaults*)standardUserDefaults;
- (void)registerDefaults:(NSDictionary<NSString*, id>*)defaults;
- (BOOL)boolForKey:(NSString*)key;
- (NSInteger)integerForKey:(NSString*)key;
- (nullable NSString*)stringForKey:(NSString*)key;
- (nullable NSDictionary<NSString*, id>*)dictionaryForKey:(NSString*)key;
- (BOOL)objectIsForcedForKey:(NSString*)key;
- (void)setBool:(BOOL)value forKey:(NSString*)key;
- (void)setInteger:(NSInteger)value forKey:(NSString*)key;
- (void)setObject:(nullable id)value forKey:(NSString*)key;
- (BOOL)synchronize;
@end

#pragma clang assume_nonnull end
