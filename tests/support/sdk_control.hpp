// Control of the Java SDK test double (class velmora.testing.Sdk) from the
// native tests: scripting outcomes, reading the journal of calls that reached
// Java, and delivering intermediate results through the registered handler.
//
// Every helper reaches the JVM that the library runs (velmora_getJavaVM()
// unless another source is installed with setJavaVMSource), attaching the
// calling thread if needed; the thread stays attached, as the library leaves
// its threads. Failures (no JVM, class or method missing, a Java exception,
// which is printed by the JVM and cleared) are thrown as std::runtime_error,
// which fails the running test.
//
// Journal entries look like
//     createJob(I[Ljava/lang/String;)I 7, ["a", "b"]
//     open()I
// i.e. method name, JNI descriptor of the overload that ran, then the
// arguments comma-separated: numbers in decimal, true/false, strings quoted
// (newline and CR shown as \n and \r), string arrays as ["a", "b"] or [],
// null as null, other objects by simple class name.
#pragma once

#include <jni.h>

#include <string>
#include <vector>

namespace sdk {

// Where the helpers find the JVM. Defaults to the library's velmora_getJavaVM.
using JavaVMSource = JavaVM *(*)();
void setJavaVMSource(JavaVMSource source);

// Forgets journal, scripts, instance count and the registered result handler.
void reset();

// Outcomes for the method `key`, either a name ("createJob", every overload)
// or name+descriptor ("createJob(I[Ljava/lang/String;)I", which takes
// precedence). One outcome per call, in order; the last stays in force.
// "throw" throws a RuntimeException, "null" returns null from a String or
// object method, anything else is parsed by the return type (int, long,
// "true"/"false", the String itself; ignored by void methods). An empty
// list removes the script.
void script(const std::string &key, std::vector<std::string> outcomes);

// Calls recorded since the last reset or read, oldest first; clears them.
std::vector<std::string> journal();

// The one call recorded since the last reset or read (clears the journal).
// Throws std::runtime_error listing the entries when there is not exactly one.
std::string lastCall();

// Whether the last String or array argument that reached Java has been
// garbage-collected (a leaked JNI local reference would keep it alive).
bool lastArgumentCollected();

// Number of ManagementImpl objects constructed since the last reset.
int instances();

// Delivers one intermediate result (text may be null) to the handler that the
// library registered, on the calling thread. Throws when none is registered.
void fire(const char *text);

// Delivers perThread results from each of `threads` new Java threads, texts
// prefix + thread + ":" + index; returns how many were delivered.
int fireConcurrently(int threads, int perThread, const std::string &prefix);

}  // namespace sdk
