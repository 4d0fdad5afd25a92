#pragma once

class KIVObject;
class KIVString;

enum class OnFailure { TELL_USER, SAY_NOTHING };

/// Writes the object to a file of its own: afterwards the file is whole or, on failure, as it was.
bool store_in_place(const KIVObject& object, const KIVString& path,
                    OnFailure on_failure = OnFailure::TELL_USER);
