"""What is measured, what stands against it, and what is aimed at."""

from collections import namedtuple

LIMITS = "limits"
OURS = "zav"
OTHERS = ["spdlog", "log4cplus", "log4cxx", "glog", "boost"]
LOGGERS = [OURS] + OTHERS
PROGRAMS = [LIMITS] + LOGGERS

NAMES = {LIMITS: "the limit", OURS: "ZAV Log", "boost": "Boost.Log"}

# What a program is asked for, and one figure that it answers with.
Task = namedtuple("Task", "workload threads")
Figure = namedtuple("Figure", "task metric")

# A row is one figure of all loggers, and the limit that it stands against, if there is one.
Row = namedtuple("Row", "label figure limit")
Group = namedtuple("Group", "title unit rows")

# Our figure must be at most `factor` times what it stands against: a limit, or the best of the other loggers.
Target = namedtuple("Target", "title figure against factor")

BEST_OTHER = "best other"


def name_of(program):
    return NAMES.get(program, program)


def figure(workload, threads, metric):
    return Figure(Task(workload, threads), metric)


WRITE = figure("write", 1, "message_ns")
WRITE_4 = figure("write", 4, "message_ns")
REOPEN = figure("reopen", 1, "message_ns")
CLOCK = figure("clock", 1, "call_ns")
LOCK = figure("lock", 1, "call_ns")
LOAD = figure("load", 1, "call_ns")
LOAD_4 = figure("load", 4, "call_ns")

NS = "ns a message"
CALL = "ns a call"

LIMIT_ROWS = [
    ("write(2) of the finished line, 1 thread", WRITE, NS),
    ("write(2) of the finished line, 4 threads, one file", WRITE_4, NS),
    ("open, append the finished line, close", REOPEN, NS),
    ("one reading of the clock", CLOCK, CALL),
    ("one lock that nobody else wants", LOCK, CALL),
    ("one relaxed load and compare, 1 thread", LOAD, CALL),
    ("one relaxed load and compare, 4 threads", LOAD_4, CALL),
]


def asynchronous_rows(metric, limit):
    return [
        Row("1 producer", figure("async-shared", 1, metric), limit),
        Row("4 producers, own loggers", figure("async-own", 4, metric), limit),
        Row("4 producers, one logger", figure("async-shared", 4, metric), limit),
    ]


PRODUCER = asynchronous_rows("producer_ns", None)
END_TO_END = asynchronous_rows("end_to_end_ns", WRITE)
REJECTED = [
    Row("function, 1 thread", figure("rejected-function", 1, "call_ns"), LOAD),
    Row("function, 4 threads", figure("rejected-function", 4, "call_ns"), LOAD_4),
    Row("macro, 1 thread", figure("rejected-macro", 1, "call_ns"), LOAD),
    Row("macro, 4 threads", figure("rejected-macro", 4, "call_ns"), LOAD_4),
]
SYNCHRONOUS = [
    Row("1 thread", figure("sync-shared", 1, "message_ns"), WRITE),
    Row("4 threads, own loggers", figure("sync-own", 4, "message_ns"), WRITE_4),
    Row("4 threads, one logger", figure("sync-shared", 4, "message_ns"), WRITE_4),
]
RENDERING = [
    Row("standard layout", figure("rendering", 1, "call_ns"), None),
    Row("with process and host", figure("rendering-process", 1, "call_ns"), None),
]

GROUPS = [
    Group("Rejected call", CALL, REJECTED),
    Group("File, every line flushed", NS, SYNCHRONOUS),
    Group("Asynchronous, every line flushed: the producer's call", CALL, PRODUCER),
    Group("Asynchronous, every line flushed: until all lines are in the file", NS, END_TO_END),
    Group("Asynchronous, every line flushed: peak memory", "KB", asynchronous_rows("peak_kb", None)),
    Group("Rotation every 10 MB over 4 files, every line flushed", NS,
          [Row("1 thread", figure("rotation", 1, "message_ns"), WRITE)]),
    Group("Rendering alone", CALL, RENDERING),
    Group("File opened and closed for every line", NS, [Row("1 thread", REOPEN, REOPEN)]),
]

# Why a logger is missing from a row.
NO_REOPENING = "has no appender that opens its file for every line"
ABSENT = {
    ("glog", "rejected-function"): "has no function for a ready string",
    ("glog", "sync-own"): "has no named loggers",
    ("glog", "async-own"): "has no asynchronous appender",
    ("glog", "async-shared"): "has no asynchronous appender",
    ("glog", "rotation"): "has no limit to the number of files",
    ("glog", "rendering"): "has no layout apart from its output",
    ("glog", "rendering-process"): "has no layout apart from its output",
    ("glog", "reopen"): NO_REOPENING,
    ("spdlog", "reopen"): NO_REOPENING,
    ("log4cplus", "reopen"): NO_REOPENING,
    ("log4cxx", "reopen"): NO_REOPENING,
}


def targets():
    for row in REJECTED:
        yield Target("rejected call, " + row.label, row.figure, row.limit, 1.5)
        yield Target("rejected call, " + row.label, row.figure, BEST_OTHER, 1.0)
    yield Target("file, 1 thread", SYNCHRONOUS[0].figure, WRITE, 1.15)
    for row in SYNCHRONOUS:
        yield Target("file, " + row.label, row.figure, BEST_OTHER, 1.0)
    for row in PRODUCER:
        yield Target("asynchronous, the call, " + row.label, row.figure, BEST_OTHER, 1.0)
    for row in END_TO_END:
        yield Target("asynchronous, end to end, " + row.label, row.figure, WRITE, 1.2)
        yield Target("asynchronous, end to end, " + row.label, row.figure, BEST_OTHER, 1.0)
    yield Target("rendering, standard layout", RENDERING[0].figure, BEST_OTHER, 0.5)
    yield Target("file opened for every line", REOPEN, REOPEN, 1.2)


def tasks(only):
    """
    \\param only the wanted workloads, or nothing for all
    \\return each task once; a limit right before the first row that stands against it
    """
    wanted = []
    for group in GROUPS:
        for row in group.rows:
            if not only or row.figure.task.workload in only:
                wanted += [row.limit.task] if row.limit else []
                wanted.append(row.figure.task)
    wanted += [measured.task for _, measured, _ in LIMIT_ROWS if not only or measured.task.workload in only]
    return list(dict.fromkeys(wanted))


def workloads():
    return sorted({task.workload for task in tasks(None)})
