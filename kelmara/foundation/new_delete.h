#pragma once
// How objects of the library's classes are made and destroyed: through the memory services, in every module.
//
// The library's own global operators stay inside it, so that a program keeps the ones it has. Each exported
// class declares KELMARA_CLASS_ALLOCATION instead: whoever makes or destroys an object of it, library or
// program, ends in the same two routines. A failed `new` gives null and runs no constructor.
//
// Both routines tell the debug log of what should not happen: "new failed", "deleting a NULL pointer!". The
// language leaves open whether `delete p` calls the operator when p is null. GCC never does, with any option;
// so it is an operator called by name, Release_Object, or code of another compiler that the log hears of.

#include <kelmara/api.h>

#include <new>

/// A block for an object, null when there is no memory, which the debug log is told.
KELMARA_API void *Allocate_Object(std::size_t size) noexcept;
/// Gives such a block back. Null goes to the debug log and nowhere else.
KELMARA_API void Release_Object(void *block) noexcept;

/// Stands in the public part of a class. Placement `new` stays to be had.
#define KELMARA_CLASS_ALLOCATION                                                                             \
    static void *operator new(std::size_t size) noexcept {                                                   \
        return Allocate_Object(size);                                                                        \
    }                                                                                                        \
    static void *operator new[](std::size_t size) noexcept {                                                 \
        return Allocate_Object(size);                                                                        \
    }                                                                                                        \
    static void *operator new(std::size_t size, const std::nothrow_t &) noexcept {                           \
        return Allocate_Object(size);                                                                        \
    }                                                                                                        \
    static void *operator new(std::size_t, void *place) noexcept {                                           \
        return place;                                                                                        \
    }                                                                                                        \
    static void operator delete(void *block) noexcept {                                                      \
        Release_Object(block);                                                                               \
    }                                                                                                        \
    static void operator delete[](void *block) noexcept {                                                    \
        Release_Object(block);                                                                               \
    }                                                                                                        \
    static void operator delete(void *block, const std::nothrow_t &) noexcept {                              \
        Release_Object(block);                                                                               \
    }                                                                                                        \
    static void operator delete(void *, void *) noexcept {}
