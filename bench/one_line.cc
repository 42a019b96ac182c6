// What a program that prints one line costs: its start is most of the time of a short command.
#include <iostream>

int main() { std::cout << "500\n"; }
