"""How good a position solution is, from its status, its type and what else is known."""

COMPUTED = 0
PROPAGATED = 19
CLASSES = {
    **dict.fromkeys((16, 17, 18, 20), 4), **dict.fromkeys((32, 33, 48, 66), 5),
    **dict.fromkeys((34, 49, 50, 51), 6), **dict.fromkeys((64, 65), 2),
}
NO_CLASS = -1
NARROW_INTEGER = 50


def solution_class(kind: int) -> int:
    return CLASSES.get(kind, NO_CLASS)


def is_usable(content: dict) -> bool:
    kind = content["position_type"]
    return (content["position_status"] == COMPUTED and kind != PROPAGATED
            and solution_class(kind) != NO_CLASS)


def fix_quality(content: dict, has_pdpstat: bool) -> int:
    if not is_usable(content):
        return 0
    if not has_pdpstat:
        return 1
    if content["position_type"] == NARROW_INTEGER:
        return 4
    return 2 if content["position_type"] in (17, 18, 20, 34, 49, 64, 65, 66) else 1


def quality_by_type(kind: int) -> int | None:
    """The position quality where the type alone decides it."""
    return {64: 3, 50: 3, 65: 2, 49: 2, 34: 2}.get(kind)


def rtk_quality_flag(kind: int) -> int:
    return {34: 2, 49: 2, 50: 3}.get(kind, 1)
