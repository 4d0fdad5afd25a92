#pragma once

#include <memory>
#include <string>

/// A sheet of keys as a program would hold and store it that uses cereal: the measure for ours.
class CerealScene {
public:
    /// `columns` columns of `keys` keys each.
    CerealScene(int columns, int keys);

    /// Read from a file that `save` wrote.
    explicit CerealScene(const std::string& path);
    ~CerealScene();
    CerealScene(const CerealScene&) = delete;
    CerealScene& operator=(const CerealScene&) = delete;

    void save(const std::string& path) const;
    int count_keys() const;

private:
    struct Sheet;
    std::unique_ptr<Sheet> sheet;
};
