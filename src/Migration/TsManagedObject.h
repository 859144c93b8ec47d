#pragma once

#import <Foundation/Foundation.h>

#include <cstddef>
#include <string_view>

#include "Base/Ref.h"
#include "Migration/TsExport.h"
#include "Migration/TsStoreFile.h"

@class TsManagedObjectContext;

// An object of a store. A subclass for each entity declares the attributes as @dynamic properties, which the entity's
// description answers: NSNumber, NSString, NSDate or NSData, nil when there is no value. Once the object is deleted, or
// its context is gone, it has no values and takes none.
@interface TsManagedObject : NSObject {
 @private
  TsManagedObjectContext* context_;
  TsStoreObject* object_;
}

// Not retained: contexts own their objects. nil when the context is gone.
@property(nonatomic, readonly) TsManagedObjectContext* managedObjectContext;

// A new object's first values, for subclasses.
- (void)awakeFromInsert;

// The values in which the object leaves its store. nil once it has none.
- (NSDictionary*)dictionaryWithValues;

// The same, written for subclasses that say which they are.
- (void)exportTo:(TsExportText&)json;

// For each object in a relationship, in the order of the store.
- (NSArray*)objectsIn:(std::string_view)relationship;

// The one of a to-one relationship.
- (id)objectIn:(std::string_view)relationship;

- (std::size_t)countIn:(std::string_view)relationship;

// A new object of the relationship's entity, its last one.
- (id)insertObjectIn:(std::string_view)relationship;

@end

// The store's own view of the object.
@interface TsManagedObject (Store)

// null once the context is gone.
- (TsStoreObject*)storeObject;

// By the attribute's position in the entity.
- (Ref<NSObject>)newValueOfAttribute:(std::size_t)attribute;
- (void)setValue:(id)value ofAttribute:(std::size_t)attribute;

@end
