#pragma once

#include "Quillmere/Platform/Linux/Tap/ReservedKeys.h"

#include <QByteArray>

/// What sway's answers mean to who would bind keys in it.
namespace quillmere::swayAnswers {

/// Whether this version can bind a key without its repeats: 1.7 is the first.
bool canBind(const QByteArray& version);

/// What the configuration binds that it was started with, and what that includes.
ReservedKeys reservedKeys(const QByteArray& version, const QByteArray& configuration);

}  // namespace quillmere::swayAnswers
