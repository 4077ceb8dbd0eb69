#include "app/App.h"

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    return tindle::render::run(std::vector<std::string>(argv + 1, argv + argc));
}
