#pragma once
// Message handler for tests that run a live kernel session: keeps what the kernel prints as whole
// lines, each with the channel it came on. Printing may come from any thread; `mutex` guards
// `lines`.

#include "tarvo_util/TarvoMessage.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

class CapturedOutput : public TarvoMessageHandler {
public:
    struct Line {
        bool is_error;
        std::string text;
    };
    void print_message(const char* text) override { add(false, text); }
    void print_error(const char* text) override { add(true, text); }

    std::vector<Line> take() {
        std::lock_guard lock(mutex);
        return std::exchange(lines, {});
    }
    void clear() { take(); }
    std::vector<std::string> starting(const std::string& prefix) {
        std::vector<std::string> found;
        std::lock_guard lock(mutex);
        for (const Line& line : lines)
            if (line.text.starts_with(prefix))
                found.push_back(line.text);
        return found;
    }
    bool has_line(const std::string& text) {
        std::lock_guard lock(mutex);
        for (const Line& line : lines)
            if (line.text == text)
                return true;
        return false;
    }
    std::string all() {
        std::lock_guard lock(mutex);
        std::string text;
        for (const Line& line : lines)
            text += line.text + "\n";
        return text;
    }

private:
    // Each call prints one or more whole lines.
    void add(bool is_error, const std::string& text) {
        std::lock_guard lock(mutex);
        for (size_t start = 0; start < text.size();) {
            const size_t end = std::min(text.find('\n', start), text.size());
            lines.push_back({is_error, text.substr(start, end - start)});
            start = end + 1;
        }
    }
    std::mutex mutex;
    std::vector<Line> lines;
};

} // namespace test_support
