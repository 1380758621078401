#pragma once

#include <QStringView>

#include <memory>
#include <string>

namespace quillon::platform
{

/// Makes keys that sort as a Japanese reader sorts (the ja locale): compare them byte by byte.
class Collator
{
public:
    Collator();
    ~Collator();
    Collator(const Collator&) = delete;
    Collator& operator=(const Collator&) = delete;

    /// Appends the key of `text` to `keys`.
    void appendKey(QStringView text, std::string& keys) const;

private:
    struct Handle;
    std::unique_ptr<Handle> m_handle;
};

} // namespace quillon::platform
