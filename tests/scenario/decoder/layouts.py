"""The body layouts of the logs: tables of (body or block offset, kind, field)."""

CARTESIAN = (
    (0, "u32", "position_status"), (4, "u32", "position_type"),
    (8, "double", "x"), (16, "double", "y"), (24, "double", "z"),
    (32, "float", "sigma_x"), (36, "float", "sigma_y"), (40, "float", "sigma_z"),
    (44, "u32", "velocity_status"), (48, "u32", "velocity_type"),
    (52, "double", "velocity_x"), (60, "double", "velocity_y"), (68, "double", "velocity_z"),
    (76, "float", "sigma_velocity_x"), (80, "float", "sigma_velocity_y"),
    (84, "float", "sigma_velocity_z"), (88, "text4", "station"),
    (92, "float", "velocity_latency"), (96, "float", "differential_age"),
    (100, "float", "solution_age"), (104, "u8", "tracked"), (105, "u8", "used"),
    (106, "u8", "used_l1"), (107, "u8", "used_multiple"), (108, "u8", "reserved"),
    (109, "u8", "extended_status"), (110, "u8", "galileo_beidou_mask"),
    (111, "u8", "gps_glonass_mask"),
)
GEODETIC = (
    (0, "u32", "status"), (4, "u32", "position_type"), (8, "double", "latitude"),
    (16, "double", "longitude"), (24, "double", "height"), (32, "float", "undulation"),
    (36, "u32", "datum"), (40, "float", "sigma_latitude"), (44, "float", "sigma_longitude"),
    (48, "float", "sigma_height"), (52, "text4", "station"), (56, "float", "differential_age"),
    (60, "float", "solution_age"), (64, "u8", "tracked"), (65, "u8", "used"),
    (66, "u8", "used_l1"), (67, "u8", "used_multiple"), (68, "u8", "reserved"),
    (69, "u8", "extended_status"), (70, "u8", "galileo_beidou_mask"),
    (71, "u8", "gps_glonass_mask"),
)
BESTPOS = ((32, "float", "undulation"), (69, "u8", "extended_status"),
           (71, "u8", "gps_glonass_mask"))
# The six dilutions arrive as floats and are taken as integers, as the daemon's consumers expect.
PSRDOP = ((0, "u32", "gdop"), (4, "u32", "pdop"), (8, "u32", "hdop"), (12, "u32", "htdop"),
          (16, "u32", "tdop"), (20, "u32", "cutoff"))
PDPSTAT = tuple((4 * i, "u32", f"count_{i}") for i in range(5)) + tuple(
    (20 + 8 * i, "double", f"value_{i}") for i in range(3))
RANGE_BLOCK = (
    (0, "u16", "prn"), (2, "u16", "glonass_frequency"), (4, "double", "pseudorange"),
    (12, "float", "sigma_pseudorange"), (16, "double", "carrier"), (24, "float", "sigma_carrier"),
    (28, "float", "doppler"), (32, "float", "cn0"), (36, "float", "lock_time"),
    (40, "u32", "tracking"),
)
TRACKSTAT_HEAD = ((0, "u32", "status"), (4, "u32", "position_type"), (8, "float", "cutoff"))
TRACKSTAT_BLOCK = (
    (0, "u16", "prn"), (2, "u16", "glonass_frequency"), (4, "u32", "tracking"),
    (8, "double", "pseudorange"), (16, "float", "doppler"), (20, "float", "cn0"),
    (24, "float", "lock_time"), (28, "float", "residual"), (32, "u32", "reject_code"),
    (36, "float", "weighting"),
)
SATELLITE = ((0, "u32", "system"), (4, "u16", "identifier"), (6, "u16", "frequency"),
             (8, "u32", "status"), (12, "u32", "signal_mask"))
REFSTATION = ((4, "double", "x"), (12, "double", "y"), (20, "double", "z"), (32, "u32", "type"),
              (36, "text5", "station"))
TIME = (
    (0, "u32", "clock_status"), (4, "double", "offset"), (12, "double", "sigma_offset"),
    (20, "double", "utc_offset"), (28, "u32", "year"), (32, "u8", "month"), (33, "u8", "day"),
    (34, "u8", "hour"), (35, "u8", "minute"), (36, "u32", "milliseconds"),
    (40, "u32", "utc_status"),
)
COMPONENT = (
    (0, "u32", "type"), (4, "text16", "model"), (20, "text16", "serial"),
    (36, "text16", "hardware"), (52, "text16", "software"), (68, "text16", "boot_code"),
    (84, "text12", "compile_date"), (96, "text12", "compile_time"),
)
STATUS_WORD = ((0, "u32", "word"), (4, "u32", "priority"), (8, "u32", "set"), (12, "u32", "clear"))
SERIAL_PORT = (
    (0, "u32", "port"), (4, "u32", "baud_rate"), (8, "u32", "parity"), (12, "u32", "data_bits"),
    (16, "u32", "stop_bits"), (20, "u32", "handshaking"), (24, "u32", "echo"),
    (28, "u32", "break_detection"), (32, "u32", "receive_mode"), (36, "u32", "transmit_mode"),
    (40, "u32", "responses"),
)
LBANDINFO = (
    (0, "u32", "frequency"), (4, "u32", "baud_rate"), (8, "u16", "service"),
    (12, "u32", "serial_number"), (16, "u32", "vbs_subscription"), (20, "u32", "vbs_expiry_week"),
    (24, "u32", "vbs_expiry_seconds"), (28, "u32", "hp_subscription"),
    (32, "u32", "hp_expiry_week"), (36, "u32", "hp_expiry_seconds"), (40, "u32", "hp_mode"),
)
LBANDSTAT_PACKED = (
    (0, "u32", "frequency"), (4, "float", "cn0"), (8, "float", "lock_time"),
    (16, "u16", "tracking"), (18, "u16", "vbs_status"), (20, "u32", "bytes"), (24, "u32", "good"),
    (28, "u32", "bad"), (34, "u16", "hp_additional"), (36, "u32", "hp_bytes"),
    (40, "u32", "hp_status"),
)
LBANDSTAT_SLOTTED = (
    (0, "u32", "frequency"), (4, "float", "cn0"), (8, "float", "lock_time"),
    (16, "u16", "tracking"), (20, "u16", "vbs_status"), (24, "u32", "bytes"), (28, "u32", "good"),
    (32, "u32", "bad"), (40, "u16", "hp_additional"), (44, "u32", "hp_bytes"),
    (48, "u32", "hp_status"),
)
