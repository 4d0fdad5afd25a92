#pragma once

class KIVString;

/// A number for the class called `name`, valid in this process alone: it depends on the order of
/// registration and is never stored. A name that is there already is reported and keeps its number.
int register_type(const KIVString& name);

/// "Unknown" for a number that nothing was registered under.
const KIVString& inq_type_name(int id);
