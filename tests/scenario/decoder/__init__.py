"""A second opinion: what the daemon must make of a byte stream, worked out independently of it.

Written from the description of the receiver's protocol and of the daemon's output, one byte at a
time and without a thought for speed. It shares no code with the daemon or with the test harness.
"""
