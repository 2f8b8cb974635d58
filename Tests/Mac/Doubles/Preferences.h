#pragma once

#include "Tests/Mac/Doubles/CoreFoundation.h"

/// What the system keeps for an application: its preferences, and the
/// information dictionary of its bundle.
namespace preferences {

/// What is stored under `key`; null for nothing.
const cf::Object* stored(const std::string& key);
/// Stores on the application's behalf; takes the reference over.
void store(const std::string& key, cf::Object* value);
/// Whether all that was set has been written to the disk since.
bool areOnDisk();

/// Puts a value into the information dictionary; takes the reference over.
void inform(const std::string& key, const cf::Object* value);

/// Forgets everything.
void reset();

}  // namespace preferences
