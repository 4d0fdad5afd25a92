#pragma once

/// Gives out objects by id and keeps those that somebody has locked.
class ObjectProvider {
public:
    virtual ~ObjectProvider() = default;

    /// Ends one `lock` of the id.
    virtual void unlock(int id) = 0;

    /// One holder more, or less, of the id; with the last one it goes.
    virtual void hold_object_id(int id) = 0;
    virtual void delete_object_id(int id) = 0;
};
