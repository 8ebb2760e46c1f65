#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

namespace vulkan {

/// What the layer knows of instances or devices, by the loader's pointer at the beginning of their handles.
/// Any thread; find() takes no lock, since every command that the application records may look here.
/// Places are used again and never freed.
template <typename Object>
class DispatchMap {
public:
    using Key = void*;

    /// Null when it is not there.
    Object* find(Key key) const {
        for (const Place* place = mFirst.load(std::memory_order_acquire); place != nullptr;
             place = place->next) {
            if (place->key.load(std::memory_order_acquire) == key) {
                return place->object.get();
            }
        }
        return nullptr;
    }

    /// Takes the place of what was there.
    void insert(Key key, std::unique_ptr<Object> object) {
        const std::lock_guard<std::mutex> lock(mMutex);
        Place* place = placeOf(key);
        place = place != nullptr ? place : placeOf(nullptr);
        if (place == nullptr) {
            place = new Place;
            place->next = mFirst.load(std::memory_order_relaxed);
            mFirst.store(place, std::memory_order_release);
        }
        place->key.store(nullptr, std::memory_order_release);
        place->object = std::move(object);
        place->key.store(key, std::memory_order_release);
    }

    std::unique_ptr<Object> remove(Key key) {
        const std::lock_guard<std::mutex> lock(mMutex);
        Place* const place = placeOf(key);
        if (place == nullptr) {
            return nullptr;
        }
        place->key.store(nullptr, std::memory_order_release);
        return std::move(place->object);
    }

private:
    struct Place {
        std::atomic<Key> key = nullptr;  ///< null: nothing is here
        std::unique_ptr<Object> object;
        Place* next = nullptr;
    };

    Place* placeOf(Key key) const {
        Place* place = mFirst.load(std::memory_order_relaxed);
        while (place != nullptr && place->key.load(std::memory_order_relaxed) != key) {
            place = place->next;
        }
        return place;
    }

    std::atomic<Place*> mFirst = nullptr;
    std::mutex mMutex;
};

}  // namespace vulkan
