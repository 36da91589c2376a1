#include "Launch/Entry.h"

int main(int count, char** vector) {
    return runProgram({vector, vector + count});
}
