// Marks by which clang checks what is locked, in scripts/lint; nothing for other compilers.
//
// A member says which lock guards it, a function which locks its caller holds, takes or releases.
// The analysis looks at one function at a time; constructors, destructors and what catches an
// exception are not looked at.

#pragma once

#if defined(__clang__)
#define THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define THREAD_ANNOTATION(attribute)
#endif

/// A class whose objects are locks; the text is its name in messages.
#define CAPABILITY(name) THREAD_ANNOTATION(capability(name))

/// A class that holds a lock for the length of a scope.
#define SCOPED_CAPABILITY THREAD_ANNOTATION(scoped_lockable)

/// Read and written only while the lock is held.
#define GUARDED_BY(lock) THREAD_ANNOTATION(guarded_by(lock))

/// Called only while the lock is held.
#define REQUIRES(...) THREAD_ANNOTATION(requires_capability(__VA_ARGS__))

#define ACQUIRE(...) THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define RELEASE(...) THREAD_ANNOTATION(release_capability(__VA_ARGS__))

/// Not checked, for a reason that stands beside it.
#define NO_THREAD_SAFETY_ANALYSIS THREAD_ANNOTATION(no_thread_safety_analysis)
