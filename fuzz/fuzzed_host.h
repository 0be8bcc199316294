// A host that makes whatever calls the fuzzer's bytes say and checks what it can tell from outside:
// a mask buffer is either untouched or a whole mask, a blended buffer holds the outline or what was
// there or the photograph, and the history delivers what a plain list of masks would.
//
// Buffers have exactly the size of the call's contract, so that the address sanitizer sees a byte
// too many.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "byte_draws.h"
#include "history_model.h"
#include "interface/segmentation_core.h"

class FuzzedHost {
  public:
    FuzzedHost(const std::uint8_t* data, std::size_t size) : m_data(data, size) {}
    ~FuzzedHost();
    FuzzedHost(const FuzzedHost&) = delete;
    FuzzedHost& operator=(const FuzzedHost&) = delete;

    // Makes calls until the bytes are used up.
    void run();

  private:
    struct Size {
        int width;
        int height;

        bool valid() const;
        std::size_t pixels() const;
    };

    Size drawSize();
    int drawCoordinate(int size);
    std::vector<std::uint32_t> drawPhoto(Size size);
    std::vector<int> drawMarks(Size size);
    // Null now and then.
    template <typename T>
    T* drawBuffer(std::vector<T>& buffer);

    void makeCall();
    void newPhoto();
    void boxAtOnce();
    void passStroke();
    void passMarks();
    void request();
    void edit();
    void step(bool back);
    void fetchOutline();
    void snapPath();
    void refusedDeliveries();
    void setTimeLimit();
    // Ends one of the requests that follow, cancels it, or makes calls that are refused.
    void observe();
    int observed(const segcore_progress& progress);

    // Runs a call, perhaps with a cancel from a second thread, and keeps the errors that it logs.
    template <typename Call>
    void call(Call&& body);
    bool failed(const char* name) const;
    // After a call that may deliver; true when a mask came.
    bool checkDelivery(bool maskPassed);
    void checkHistory();

    Size storedSize() const;

    ByteDraws m_data;
    Size m_largest{0, 0};  // of the photographs so far
    std::vector<std::uint32_t> m_blended;
    Mask m_mask;
    std::vector<int> m_marks;  // pending, of the photograph's size
    std::vector<std::string> m_errors;
    HistoryModel m_history;
    int m_observerActsIn = 0;  // calls of the observer
    int m_observerAct = 0;
};
