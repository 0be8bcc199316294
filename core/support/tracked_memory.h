// Allocation calls that name their caller in the log, and a leak report.
//
// The *_Msg calls allocate and log a failure; the others also register the block on gMemStack until
// it is released, so that VORN_check_memory_status can list what was forgotten. `function` must be
// a string that outlives the record (a literal), since only its address is kept; `line` appears in
// log lines and records only.
//
// Threads: the *_Msg calls may be made wherever malloc may. The registering calls share one
// unlocked stack and belong to one thread at a time.
#pragma once

#include <cstddef>

#include "support/export.h"

// What is remembered of a registered block. `size` is in bytes, 0 for objects registered by
// VORN_New_Mngr.
struct VORN_Mem_Info {
    int line;
    const char* function;
    unsigned int size;
};

// A singly linked stack of addresses with a record each; the newest is at the head. Destroying it
// releases the links, not the records or the blocks.
template <typename Record>
class VORN_Stack {
  public:
    struct Node {
        void* address;
        Record record;
        Node* next;
    };

    VORN_Stack() = default;
    VORN_Stack(const VORN_Stack&) = delete;
    VORN_Stack& operator=(const VORN_Stack&) = delete;
    ~VORN_Stack() {
        while (m_head != nullptr) {
            Node* next = m_head->next;
            delete m_head;
            m_head = next;
        }
    }

    Node* m_head = nullptr;
};

SEGCORE_DATA_API extern VORN_Stack<VORN_Mem_Info*> gMemStack;

// malloc / calloc / free. On failure: one error line under "TAG_MEM" and null. Releasing null logs
// a warning and does nothing.
SEGCORE_API void* VORN_Malloc_Msg(std::size_t size, const char* function, int line);
SEGCORE_API void* VORN_Calloc_Msg(std::size_t count, std::size_t size, const char* function,
                                  int line);
SEGCORE_API void VORN_Free_Msg(void* block, const char* function, int line);

// The same, registering the block. VORN_Free releases registered blocks only; any other address
// logs a warning and is left alone.
SEGCORE_API void* VORN_Malloc(std::size_t size, const char* function, int line);
SEGCORE_API void* VORN_Calloc(std::size_t count, std::size_t size, const char* function, int line);
SEGCORE_API void VORN_Free(void* block, const char* function, int line);

// Registers the result of `new` and hands it back; null logs an error and gives null.
SEGCORE_API void* VORN_New_Mngr(void* object, const char* function, int line);
// Strikes an object (or array) off; the caller deletes it. 1 when it was registered, else 0 and a
// warning.
SEGCORE_API int VORN_Delete_Mngr(void* object, const char* function, int line);
SEGCORE_API int VORN_Delete_Array_Mngr(void* array, const char* function, int line);

// Logs every block still registered, newest first, and empties the stack; the blocks themselves
// stay allocated.
SEGCORE_API void VORN_check_memory_status();
