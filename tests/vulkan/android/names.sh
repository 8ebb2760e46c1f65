#!/bin/sh
# The functions of Vulkan that a program calls, as lines NAME(...), without those that a loader has itself.
nm -Du "$1" | sed -n 's/.* U \(vk[A-Za-z0-9]*\).*/NAME(\1)/p' | grep -vE 'ProcAddr|vkCreate(Instance|Device)\)'
