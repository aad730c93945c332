"""The words of the receiver and the texts of their bits."""

ERROR_TEXTS = {
    0: "DRAM Error,", 1: "Invalid firmware,", 2: "ROM error,", 4: "ESN access error,",
    6: "Slow ADC error,", 7: "Supply voltage outside limits,", 8: "Thermometer error,",
    9: "Temperature outside limits,", 10: "MINOS5 error,", 11: "L1 PLL hardware error,",
    12: "L2 PLL hardware error,", 13: "L1 hardware error,", 14: "L2 hardware error,",
    15: "NVM Error,", 16: "Software resource limit,", 20: "Remote loading has begun,",
    21: "Export restriction error,", 31: "Component hardware failure,",
}
STATUS_TEXTS = {
    0: "Error,", 1: "Temperature warning,", 2: "Voltage supply warning,",
    3: "Antenna not powered,", 4: "Reserved 1,", 5: "Antenna open,", 6: "Antenna shorted,",
    7: "CPU overload,", 8: "COM1 buffer overrun,", 9: "COM2 buffer overrun,",
    10: "COM3 buffer overrun,", 11: "USB buffer overrun,", 12: "Reserved 2,",
    15: "L1 AGC error,", 16: "Reserved,", 17: "L2 AGC error,", 18: "Almanac invalid,",
    19: "Position solution invalid,", 20: "Fixed position set,", 21: "Clock steering disabled,",
    22: "Clock model invalid,", 23: "external oscillator,", 24: "Software resource warning,",
    25: "Reserved 4,", 29: "Auxiliary 3 status event,", 30: "Auxiliary 2 status event,",
    31: "Auxiliary 1 status event,",
}


def bit_is_set(word: int, bit: int) -> bool:
    return word >> bit & 1 == 1


def _texts(word: int, table: dict[int, str]) -> str:
    return "".join(text for bit, text in table.items() if bit_is_set(word, bit))


def status_value(word: int) -> str:
    return f"0x{word:08X}: {_texts(word, STATUS_TEXTS)}"


def error_value(word: int) -> str:
    return f"0x{word:08X}: {_texts(word, ERROR_TEXTS) if word else 'No Errors'}"
