#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

namespace vulkan {

/// What the layer knows of the application's objects, by handle. Any thread; that nobody removes what another
/// thread still uses is the application's to see to, as for the objects themselves.
template <typename Key, typename Object>
class ObjectMap {
public:
    /// Null when it is not there.
    Object* find(Key key) const {
        const std::shared_lock<std::shared_mutex> lock(mMutex);
        const auto found = std::find_if(mObjects.begin(), mObjects.end(),
                                        [key](const auto& each) { return each.first == key; });
        return found == mObjects.end() ? nullptr : found->second.get();
    }

    /// Takes the place of what was there.
    void insert(Key key, std::unique_ptr<Object> object) {
        remove(key);
        const std::lock_guard<std::shared_mutex> lock(mMutex);
        mObjects.emplace_back(key, std::move(object));
    }

    /// Leaves what was there.
    void add(Key key, std::unique_ptr<Object> object) {
        const std::lock_guard<std::shared_mutex> lock(mMutex);
        if (std::none_of(mObjects.begin(), mObjects.end(),
                         [key](const auto& each) { return each.first == key; })) {
            mObjects.emplace_back(key, std::move(object));
        }
    }

    std::unique_ptr<Object> remove(Key key) {
        const std::lock_guard<std::shared_mutex> lock(mMutex);
        const auto found = std::find_if(mObjects.begin(), mObjects.end(),
                                        [key](const auto& each) { return each.first == key; });
        if (found == mObjects.end()) {
            return nullptr;
        }
        std::unique_ptr<Object> object = std::move(found->second);
        mObjects.erase(found);
        return object;
    }

    /// Any one of them; null when there is none left.
    std::unique_ptr<Object> removeAny() {
        const std::lock_guard<std::shared_mutex> lock(mMutex);
        if (mObjects.empty()) {
            return nullptr;
        }
        std::unique_ptr<Object> object = std::move(mObjects.back().second);
        mObjects.pop_back();
        return object;
    }

private:
    mutable std::shared_mutex mMutex;
    std::vector<std::pair<Key, std::unique_ptr<Object>>> mObjects;
};

}  // namespace vulkan
