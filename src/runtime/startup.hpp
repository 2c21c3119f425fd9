// Start-up of the Java runtime: load libjvm, join or create the machine,
// find the management class.
#pragma once

#include <string>

namespace velmora::runtime {

// The JavaVM option that puts the SDK jars of `libraryDir` on the class path.
std::string classPathOption(const std::string &libraryDir);

// Keeps `cause` as the calling thread's failure, followed by the
// velmora-doctor command that examines this library's set-up.
void recordStartup(std::string cause);

// velmora_initJava: 0, -22, -11 or -12.
int startUp();

// What an initialiser needs first: start-up when no machine is ready, else
// the calling thread made the start-up thread. 0 or start-up's status.
int startOrAttach();

}  // namespace velmora::runtime
