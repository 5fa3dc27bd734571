// SPDX-License-Identifier: Apache-2.0
// Annotations for clang's thread-safety analysis (scripts/lint); empty for other compilers.
//
// Members name the lock that guards them; functions name the locks that they expect held, acquire
// or release. The analysis looks at one function at a time, and neither at constructors and
// destructors nor at exception handlers.

#pragma once

#if defined(__clang__)
#define THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define THREAD_ANNOTATION(attribute)
#endif

/// A class of locks; `name` is used in messages.
#define CAPABILITY(name) THREAD_ANNOTATION(capability(name))

/// A class that holds a lock for the length of a scope.
#define SCOPED_CAPABILITY THREAD_ANNOTATION(scoped_lockable)

/// A member that is read and written only while the lock is held.
#define GUARDED_BY(lock) THREAD_ANNOTATION(guarded_by(lock))

/// A function that is called only while the lock is held.
#define REQUIRES(...) THREAD_ANNOTATION(requires_capability(__VA_ARGS__))

#define ACQUIRE(...) THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define RELEASE(...) THREAD_ANNOTATION(release_capability(__VA_ARGS__))

/// A function that is not checked; a comment says why.
#define NO_THREAD_SAFETY_ANALYSIS THREAD_ANNOTATION(no_thread_safety_analysis)
