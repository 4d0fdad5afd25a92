#pragma once

/// A flag that is up for as long as this lives, whatever happens meanwhile.
class Raised {
public:
    explicit Raised(bool& flag) : flag(flag) { flag = true; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;
    ~Raised() { flag = false; }

private:
    bool& flag;
};
