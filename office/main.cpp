#include "office/control.h"
#include "office/serve.h"

#include <iostream>
#include <vector>

using namespace zelkovanta::office;

namespace {

template <class... Works>
struct Each : Works... {
    using Works::operator()...;
};

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    const auto command = parseCommandLine(words);
    if (!command) {
        std::cerr << command.error() << "\n";
        return 2;
    }
    return std::visit(Each{[](const Serve& order) { return serve(order, std::cout, std::cerr); },
                           [](const Control& order) { return control(order, std::cout, std::cerr); },
                           [](const Approve& order) { return approve(order, std::cout, std::cerr); },
                           [](const Help&) {
                               std::cout << usageText();
                               return 0;
                           }},
                      *command);
}
