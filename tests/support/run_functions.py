"""Runs the functions of a test file whose names begin with "test_", in the order of their names."""


def run_all(names):
    tests = [value for name, value in sorted(names.items()) if name.startswith("test_")]
    assert tests
    for test in tests:
        test()
    print("%d tests" % len(tests))
