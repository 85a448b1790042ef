#pragma once

#include <filesystem>
#include <string>

/// The administrator's file of forced values, where this process looks for it.
std::filesystem::path managedFile();

/// Makes it hold a dictionary of so much XML: "<key>autoUpdate</key><false/>".
void force(const std::string& entries);
