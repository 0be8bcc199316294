#include "recorder.h"

#include "interface/segmentation_core.h"

namespace {

constexpr int kHistory = 31;  // masks that the library keeps

void addState(Digest& digest, const HostSession& host) {
    digest.add(host.mask)
        .add(host.blended)
        .add(std::vector<std::uint8_t>{canUndo() ? std::uint8_t{1} : std::uint8_t{0},
                                       canRedo() ? std::uint8_t{1} : std::uint8_t{0}});
}

}  // namespace

void Recorder::start(const std::string& session) {
    m_session = session;
    m_step = 0;
}

void Recorder::step(const std::string& name, const Digest& mask, const Digest& outline) {
    m_lines.push_back(m_session + " " + std::to_string(++m_step) + "-" + name + " mask " +
                      mask.text() + " outline " + outline.text());
}

void Recorder::step(const std::string& name, const HostSession& host) {
    step(name, Digest().add(host.mask),
         Digest().add(host.blended).add(HostSession::fetchOutline()));
}

void Recorder::history(HostSession& host) {
    Digest digest;
    for (int i = 0; i < kHistory && canUndo(); ++i) {
        host.undo();
        addState(digest, host);
    }
    host.undo();  // past the first mask: nothing on display
    addState(digest, host);
    for (int i = 0; i <= kHistory && canRedo(); ++i) {
        host.redo();
        addState(digest, host);
    }
    m_lines.push_back(m_session + " " + std::to_string(++m_step) + "-history " + digest.text());
}
