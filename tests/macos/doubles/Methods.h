// Replaces methods of Objective-C classes by functions.
//
// - The class must be initialized: before that, the method would be replaced for every class that is not initialized.
// - Subclasses that are already initialized keep the old method.

#pragma once

#import <objc/runtime.h>

namespace doubles {

// Replaces an instance method. Returns the old method, which a superclass may have implemented.
template <typename Function>
Function* replaceMethod(Class owner, SEL method, Function* replacement, const char* types) {
  using Any = void (*)();
  const IMP implementation = reinterpret_cast<IMP>(reinterpret_cast<Any>(replacement));
  const IMP previous = class_getMethodImplementation(owner, method);
  // Adding the method first keeps that of a superclass.
  if (!class_addMethod(owner, method, implementation, types)) class_replaceMethod(owner, method, implementation, types);
  return reinterpret_cast<Function*>(reinterpret_cast<Any>(previous));
}

// Replaces a class method.
template <typename Function>
Function* replaceClassMethod(Class owner, SEL method, Function* replacement, const char* types) {
  return replaceMethod(object_getClass(owner), method, replacement, types);
}

}  // namespace doubles
