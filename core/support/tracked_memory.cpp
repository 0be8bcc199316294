// The allocation wrappers and their stack of live blocks. Invariant: every node of gMemStack stands
// for one registered address, newest at the head.
#include "support/tracked_memory.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#include "support/log.h"

VORN_Stack<VORN_Mem_Info*> gMemStack;

namespace {

constexpr const char* kMemoryTag = "TAG_MEM";
constexpr const char* kFreeWarning =
    "Trying to free invalid pointer : %x in function : %s, Line : %d !";

using Node = VORN_Stack<VORN_Mem_Info*>::Node;

// %x prints 32 bits, the width of an address on the devices that the wording was made for.
unsigned int printable(const void* address) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(address));
}

void logFailedAllocation(std::size_t size, const char* function, int line) {
    SEGCORE_LOG(ANDROID_LOG_ERROR, kMemoryTag,
                "Failed to allocate %d bytes in function : %s, Line : %d !", static_cast<int>(size),
                function, line);
}

bool pushNode(void* address, unsigned int size, const char* function, int line) {
    auto* record = new (std::nothrow) VORN_Mem_Info{line, function, size};
    auto* node = new (std::nothrow) Node{address, record, gMemStack.m_head};
    if (record == nullptr || node == nullptr) {
        delete record;
        delete node;
        return false;
    }
    gMemStack.m_head = node;
    return true;
}

void* registerBlock(void* block, std::size_t size, const char* function, int line) {
    if (block != nullptr && !pushNode(block, static_cast<unsigned int>(size), function, line)) {
        logFailedAllocation(sizeof(Node), function, line);
        std::free(block);
        return nullptr;
    }
    return block;
}

// Unlinks the node of `address` and hands out its record; null when the address is not registered
// or its node has no record.
VORN_Mem_Info* unlinkRecord(const void* address) {
    for (Node** link = &gMemStack.m_head; *link != nullptr; link = &(*link)->next) {
        if ((*link)->address == address) {
            Node* found = *link;
            VORN_Mem_Info* record = found->record;
            *link = found->next;
            delete found;
            return record;
        }
    }
    return nullptr;
}

int strikeOff(void* object, const char* function, int line, const char* warning) {
    VORN_Mem_Info* record = unlinkRecord(object);
    if (record == nullptr) {
        SEGCORE_LOG(ANDROID_LOG_WARN, kMemoryTag, warning, printable(object), function, line);
        return 0;
    }
    delete record;
    return 1;
}

}  // namespace

void* VORN_Malloc_Msg(std::size_t size, const char* function, int line) {
    void* block = std::malloc(size);
    if (block == nullptr) {
        logFailedAllocation(size, function, line);
    }
    return block;
}

void* VORN_Calloc_Msg(std::size_t count, std::size_t size, const char* function, int line) {
    void* block = std::calloc(count, size);
    if (block == nullptr) {
        logFailedAllocation(count * size, function, line);
    }
    return block;
}

void VORN_Free_Msg(void* block, const char* function, int line) {
    if (block == nullptr) {
        SEGCORE_LOG(ANDROID_LOG_WARN, kMemoryTag, kFreeWarning, 0U, function, line);
        return;
    }
    std::free(block);
}

void* VORN_Malloc(std::size_t size, const char* function, int line) {
    return registerBlock(VORN_Malloc_Msg(size, function, line), size, function, line);
}

void* VORN_Calloc(std::size_t count, std::size_t size, const char* function, int line) {
    return registerBlock(VORN_Calloc_Msg(count, size, function, line), count * size, function,
                         line);
}

void VORN_Free(void* block, const char* function, int line) {
    VORN_Mem_Info* record = unlinkRecord(block);
    if (record == nullptr) {
        SEGCORE_LOG(ANDROID_LOG_WARN, kMemoryTag, kFreeWarning, printable(block), function, line);
        return;
    }
    std::free(block);
    delete record;
}

void* VORN_New_Mngr(void* object, const char* function, int line) {
    if (object == nullptr) {
        SEGCORE_LOG(ANDROID_LOG_ERROR, kMemoryTag,
                    "Allocation failed in function : %s, Line : %d !", function, line);
        return nullptr;
    }
    pushNode(object, 0, function, line);
    return object;
}

int VORN_Delete_Mngr(void* object, const char* function, int line) {
    return strikeOff(object, function, line,
                     "Trying to delete invalid pointer : %x in function : %s, Line : %d");
}

int VORN_Delete_Array_Mngr(void* array, const char* function, int line) {
    return strikeOff(array, function, line,
                     "Trying to delete invalid pointer array: %x in function : %s, Line : %d");
}

void VORN_check_memory_status() {
    if (gMemStack.m_head == nullptr) {
        SEGCORE_LOG(ANDROID_LOG_INFO, kMemoryTag, "No memory Leak found ");
        return;
    }
    while (gMemStack.m_head != nullptr) {
        Node* node = gMemStack.m_head;
        if (node->record != nullptr) {
            SEGCORE_LOG(ANDROID_LOG_ERROR, kMemoryTag,
                        "Failed to deallocate %d bytes allocated in function : %s, Line : %d",
                        static_cast<int>(node->record->size), node->record->function,
                        node->record->line);
        }
        gMemStack.m_head = node->next;
        delete node;
    }
}
