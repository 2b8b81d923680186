// Puts functions in the place of methods, before the program begins.
//
// The class has to be set up by then: the method of one that is not would be replaced for every class that is not.
// Classes below it that have been set up keep the former method.

#pragma once

#import <objc/runtime.h>

namespace doubles {

// The method that was called until now, the class's own or that of one above it.
template <typename Function>
Function* replaceIn(Class owner, SEL method, Function* mine, const char* types) {
  using Any = void (*)();
  const IMP implementation = reinterpret_cast<IMP>(reinterpret_cast<Any>(mine));
  const IMP former = class_getMethodImplementation(owner, method);
  // What a class above has is not to be replaced there.
  if (!class_addMethod(owner, method, implementation, types)) class_replaceMethod(owner, method, implementation, types);
  return reinterpret_cast<Function*>(reinterpret_cast<Any>(former));
}

// The same of a method of the class itself.
template <typename Function>
Function* replaceOf(Class owner, SEL method, Function* mine, const char* types) {
  return replaceIn(object_getClass(owner), method, mine, types);
}

}  // namespace doubles
