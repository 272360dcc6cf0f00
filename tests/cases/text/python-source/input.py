#!/usr/bin/env python3
"""A small greeter; it's short."""
import sys
from os import path

def greet(name):
    # says hello
    print('Hello, ' + name)
    return {"name": name}

class Greeter:
    greeting = "hi"

    def run(self, names=[]):
        for name in names: greet(name)

if __name__ == "__main__":
    Greeter().run(sys.argv[1:])
