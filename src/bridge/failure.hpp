// The calling thread's account of its last failure: what
// velmora_describeLastFailure hands out. Only failure paths write it, so a
// call that succeeds costs nothing here and leaves the account as it was.
#pragma once

#include <jni.h>

#include <string>
#include <string_view>

#include "bridge/calls.hpp"

namespace velmora::failure {

// Replaces the calling thread's account; the account ("" before any failure).
void record(std::string text);
const std::string &lastAccount();
// The words for a machine that cannot be started again in this process.
inline constexpr std::string_view kOnlyANewProcess = " Only a new process can start Java again.";

// Records why the guard of a call failed (no start-up, no management object,
// no peach wrapper, a forked child, a machine that is gone).
void notInitialized();

// Clears the lookup's pending error, records the method that the class
// lacks, and returns -12.
int methodNotFound(JNIEnv *jenv, const char *klass, const char *method, const char *signature);
inline int methodNotFound(JNIEnv *jenv, const CallRow &row) {
    return methodNotFound(jenv, className(row.target), row.method, row.signature);
}

// The same for a class that the class path lacks.
int classNotFound(JNIEnv *jenv, const char *klass);

// Describes (on the JVM's error stream) and clears a pending exception,
// keeping its class, message and stack trace with its causes as the account;
// true if there was one.
bool takeException(JNIEnv *jenv);
// The same without the description on the error stream; `context` leads the
// account.
bool keepException(JNIEnv *jenv, std::string_view context);

}  // namespace velmora::failure
