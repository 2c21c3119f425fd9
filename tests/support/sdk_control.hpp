// Control of the Java SDK test double (class velmora.testing.Sdk, see
// tests/sdk/java) from the native tests, through the JVM the library runs.
// The calling thread is attached if needed and stays attached. A failure (no
// JVM, a Java exception) throws std::runtime_error, which fails the test.
//
// Journal entries are the method name, the JNI descriptor of the overload
// that ran, then the arguments comma-separated: numbers in decimal,
// true/false, strings quoted (newline and CR as \n and \r), string arrays as
// ["a", null] or [], null as null, other objects by simple class name:
//     createJob(I[Ljava/lang/String;)I 7, ["a", "b"]
#pragma once

#include <string>
#include <vector>

namespace sdk {

// Forgets journal, scripts and the registered result handler.
void reset();

// Outcomes for `key`, a method name (every overload) or name+descriptor
// (which wins), one per call, the last staying in force: "throw", "null" (a
// String or object result), or the value to return. No outcomes removes the
// script. "<init>" scripts the constructors ("throw" only), which journal
// themselves as "<init>()V".
void script(const std::string &key, std::vector<std::string> outcomes);

// Calls recorded since the last reset or read, oldest first; clears them.
std::vector<std::string> journal();

// The one call recorded since the last read; throws unless there is exactly one.
std::string lastCall();

// Live Java threads of the library's JVM, attached native threads included.
int javaThreads();

// Delivers one intermediate result (text may be null) to the handler the
// library registered, on the calling thread.
void fire(const char *text);

// Delivers perThread results from each of `threads` new Java threads, texts
// prefix + thread + ":" + index; returns how many were delivered.
int fireConcurrently(int threads, int perThread, const std::string &prefix);

}  // namespace sdk
