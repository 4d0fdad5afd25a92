#pragma once

class KIVObject;
class KIVString;

/// Writes the object to a file of its own: afterwards the file is whole or, on failure, as it was.
/// The user is told of a failure.
bool store_in_place(const KIVObject& object, const KIVString& path);
