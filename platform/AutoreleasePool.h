// Scopes in which a system with autoreleased objects collects them; elsewhere they mean nothing and cost nothing.
//
// Scopes of a thread nest: the last one opened is closed first, on the thread that opened it.

#pragma once

namespace platform {

// Never null. Owned by the caller until it is handed to `closeAutoreleasePool`.
void* openAutoreleasePool();

// Releases what was autoreleased since the pool was opened. Null is none.
void closeAutoreleasePool(void* pool);

// A pool that lives as long as its C++ scope.
class AutoreleaseScope {
 public:
  AutoreleaseScope() : pool_(openAutoreleasePool()) {}
  AutoreleaseScope(const AutoreleaseScope&) = delete;
  AutoreleaseScope& operator=(const AutoreleaseScope&) = delete;
  ~AutoreleaseScope() { closeAutoreleasePool(pool_); }

 private:
  void* pool_;
};

}  // namespace platform
