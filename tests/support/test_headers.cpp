// The owner of the test programs' precompiled header, which has nothing of its own.
