#pragma once

#include <filesystem>
#include <string>

namespace quillmere::support {

/// Desktops that do not run for an administrator run, in tests that one runs,
/// as the user that owns nothing. None of this does anything where the tests
/// are an ordinary user's themselves.

/// For ChildProcess::Options::prepare: goes on as that user.
void becomeOrdinaryUser();

/// Gives that user a file or a folder, without what is in it. Throws when it
/// cannot be.
void giveToOrdinaryUser(const std::filesystem::path& path);

/// A program that runs `program` as that user, written to `wrapper`; `program`
/// itself where the tests are an ordinary user's. Its arguments are passed on.
std::filesystem::path programOfOrdinaryUser(const std::filesystem::path& program, const std::filesystem::path& wrapper);

/// Lets the tests onto the X server of that user's desktop, which serves nobody
/// else. Nothing for an empty display; throws when there is no such server.
void openXwaylandToTests(const std::string& display);

}  // namespace quillmere::support
