#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "Migration/TsStoreModel.h"

@class TsManagedObjectContext;

// An object of a store. A subclass for each entity declares the attributes as @dynamic properties: NSNumber, NSString,
// NSDate or NSData, nil when there is no value. An object that is deleted, or whose context has lost its store, has no
// values and takes none.
@interface TsManagedObject : NSObject {
 @private
  TsManagedObjectContext* _context;
  const TsEntity* _entity;
  std::string _identifier;
}

// Not retained: contexts own their objects. nil when the context is gone.
@property(nonatomic, readonly) TsManagedObjectContext* managedObjectContext;

// A new object's first values, for subclasses.
- (void)awakeFromInsert;

// Every attribute that has a value, by its name.
- (NSMutableDictionary*)values;

// The object as it leaves its store: every attribute, null for those without a value. nil once there are none.
- (NSDictionary*)dictionaryWithValues;

// The objects of a relationship, in the order of the store.
- (NSArray*)objectsIn:(std::string_view)relationship;

// The one of a to-one relationship.
- (id)objectIn:(std::string_view)relationship;

- (NSUInteger)countIn:(std::string_view)relationship;

// A new object of the relationship's entity, as the last one.
- (id)insertObjectIn:(std::string_view)relationship;

@end

// For the context, and the accessors of the attributes.
@interface TsManagedObject (Store)

- (instancetype)initWithContext:(TsManagedObjectContext*)context
                         entity:(const TsEntity&)entity
                     identifier:(const std::string&)identifier;
- (const std::string&)storeIdentifier;
- (const TsEntity&)storeEntity;
- (void)contextIsGone;

- (id)valueForAccessor:(SEL)accessor;
- (void)setValue:(id)value forAccessor:(SEL)accessor;

@end
