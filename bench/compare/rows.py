"""What is measured, what stands against it, and what is aimed at."""

from collections import namedtuple

LIMITS = "limits"
OURS = "zav"
BEFORE = "before"
OTHERS = ["quill", "spdlog", "log4cplus", "log4cxx", "glog", "boost"]
LOGGERS = [OURS, BEFORE] + OTHERS
PROGRAMS = [LIMITS] + LOGGERS

NAMES = {LIMITS: "the limit", OURS: "ZAV Log", BEFORE: "before", "boost": "Boost.Log"}

# What a program is asked for, and one of the figures that it prints.
Task = namedtuple("Task", "workload threads")
Figure = namedtuple("Figure", "task metric")

# A row is one figure of all loggers, and the limit that it is compared with, if there is one.
Row = namedtuple("Row", "label figure limit")
Group = namedtuple("Group", "title unit rows")

# Our figure must be at most `factor` times what it is compared with: a limit, another logger, the best of them, an
# earlier commit of ours, another figure of ours, or a fixed value.
Target = namedtuple("Target", "title figure against factor")
Value = namedtuple("Value", "value unit")
Ours = namedtuple("Ours", "figure name")

BEST_OTHER = "best other"
SPDLOG = "spdlog"
QUILL = "quill"


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


def asynchronous_rows(metric, limit, workload="async"):
    return [
        Row("1 producer", figure(workload + "-shared", 1, metric), limit),
        Row("4 producers, own loggers", figure(workload + "-own", 4, metric), limit),
        Row("4 producers, one logger", figure(workload + "-shared", 4, metric), limit),
    ]


PRODUCER = asynchronous_rows("producer_ns", None)
END_TO_END = asynchronous_rows("end_to_end_ns", WRITE)
BATCH_PRODUCER = asynchronous_rows("producer_ns", None, "async-batch")
BATCH_END_TO_END = asynchronous_rows("end_to_end_ns", None, "async-batch")
BATCH_CPU_TIME = asynchronous_rows("cpu_ns", None, "async-batch")
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
CPU_TIME = asynchronous_rows("cpu_ns", None)
PEAK_MEMORY = asynchronous_rows("peak_kb", None)
DROPPED = [
    Row("values, streamed", figure("dropped-streamed", 1, "call_ns"), None),
    Row("values, format string", figure("dropped-formatted", 1, "call_ns"), None),
    Row("ready text", figure("dropped-text", 1, "call_ns"), None),
]
BURST = [
    Row("values, streamed", figure("burst-streamed", 1, "producer_ns"), None),
    Row("values, format string", figure("burst-formatted", 1, "producer_ns"), None),
    Row("values, format string, 4 producers, own loggers", figure("burst-formatted-own", 4, "producer_ns"), None),
]
SELDOM = Row("a thread that has logged once", figure("seldom", 1000, "thread_kb"), None)


def latency_rows(workload):
    percentiles = [("p50", "p50_ns"), ("p99", "p99_ns"), ("p99.9", "p999_ns"), ("max", "max_ns")]
    return [Row("%s, %s" % (delivery, label), figure(workload + suffix, 1, metric), None)
            for delivery, suffix in [("default waiting period", ""), ("prompt delivery", "-prompt")]
            for label, metric in percentiles]


LATENCY_BURSTS = latency_rows("latency-bursts")
LATENCY_SPACED = latency_rows("latency-spaced")
CONSUMER = Row("prompt delivery", figure("latency-spaced-prompt", 1, "consumer_percent"), None)
RENDERING = [
    Row("standard layout", figure("rendering", 1, "call_ns"), None),
    Row("with process and host", figure("rendering-process", 1, "call_ns"), None),
]

JSON = [
    Row("synchronous, every line flushed", figure("json-sync", 1, "message_ns"), None),
    Row("asynchronous, every line flushed: the producer's call", figure("json-async", 1, "producer_ns"), None),
    Row("asynchronous, every line flushed: until all lines are in the file", figure("json-async", 1, "end_to_end_ns"), None),
    Row("asynchronous, many lines flushed at once: the producer's call", figure("json-async-batch", 1, "producer_ns"), None),
    Row("asynchronous, many lines flushed at once: until all lines are in the file",
        figure("json-async-batch", 1, "end_to_end_ns"), None),
]

# The same burst with the queue in memory, in a file on tmpfs, and in one next to the log.
KEPT = [("in memory", "burst-formatted"), ("in a file on tmpfs", "kept-tmpfs"), ("in a file beside the log", "kept-beside")]


def kept_rows(title, metric):
    return [Row("%s, %s" % (title, place), figure(workload, 1, metric), None) for place, workload in KEPT]


KEPT_CALL = kept_rows("the call", "producer_ns")
KEPT_END_TO_END = kept_rows("end to end", "end_to_end_ns")
KEPT_SPACED = [Row(place, figure("latency-spaced" + suffix, 1, "p50_ns"), None)
               for place, suffix in [("in memory", ""), ("in a file on tmpfs", "-tmpfs"), ("in a file beside the log", "-beside")]]

GROUPS = [
    Group("Rejected call", CALL, REJECTED),
    Group("Nothing written", CALL, DROPPED),
    Group("File, every line flushed", NS, SYNCHRONOUS),
    Group("Asynchronous, every line flushed: the producer's call", CALL, PRODUCER),
    Group("Asynchronous, every line flushed: until all lines are in the file", NS, END_TO_END),
    Group("Asynchronous, every line flushed: processor time of all threads", NS, CPU_TIME),
    Group("Asynchronous, every line flushed: peak memory", "KB", PEAK_MEMORY),
    Group("Asynchronous, many lines flushed at once: the producer's call", CALL, BATCH_PRODUCER),
    Group("Asynchronous, many lines flushed at once: until all lines are in the file", NS, BATCH_END_TO_END),
    Group("Asynchronous, many lines flushed at once: processor time of all threads", NS, BATCH_CPU_TIME),
    Group("Asynchronous: memory of each of 1000 threads", "KB", [SELDOM]),
    Group("Asynchronous, values: the producer's call in one burst", CALL, BURST),
    Group("Asynchronous, values: calls in bursts of 1000, one every 20 ms", CALL, LATENCY_BURSTS),
    Group("Asynchronous, values: one call every 100 us", CALL, LATENCY_SPACED),
    Group("Asynchronous, values: one call every 100 us: the consumer's processor time", "% of one core", [CONSUMER]),
    Group("The queue kept in a file: one burst", NS, KEPT_CALL + KEPT_END_TO_END),
    Group("The queue kept in a file: one call every 100 us, p50", CALL, KEPT_SPACED),
    Group("A message with two context pairs and three values, as JSON", NS, JSON),
    Group("Rotation every 10 MB over 4 files, every line flushed", NS,
          [Row("1 thread", figure("rotation", 1, "message_ns"), WRITE)]),
    Group("Rendering alone", CALL, RENDERING),
    Group("File opened and closed for every line", NS, [Row("1 thread", REOPEN, REOPEN)]),
]

ONLY_A_QUEUE = ["dropped-text", "dropped-streamed", "dropped-formatted", "sync-shared", "sync-own", "rotation"]
EVERY_LINE = ["async-shared", "async-own"]
IN_BATCHES = ["async-batch-shared", "async-batch-own"]
IN_A_FILE = ["kept-tmpfs", "kept-beside", "latency-spaced-tmpfs", "latency-spaced-beside"]

# Why a logger is missing from a row.
NO_BATCHES = "flushes every line, or leaves it to the buffer's size and to a clock"
NO_REOPENING = "has no appender that opens its file for every line"
NO_FORMAT = "has no format strings"
NO_QUEUE = "has no asynchronous appender"
NO_JSON = "writes no JSON"
NO_FILE = "keeps its queue in memory alone"
JSON_WORKLOADS = ["json-sync", "json-async", "json-async-batch"]
ABSENT = {
    ("glog", "rejected-function"): "has no function for a ready string",
    ("glog", "sync-own"): "has no named loggers",
    ("glog", "async-own"): NO_QUEUE,
    ("glog", "async-shared"): NO_QUEUE,
    ("glog", "burst-streamed"): NO_QUEUE,
    ("glog", "burst-formatted"): NO_QUEUE,
    ("glog", "burst-formatted-own"): NO_QUEUE,
    ("glog", "seldom"): NO_QUEUE,
    ("glog", "latency-bursts"): NO_QUEUE,
    ("glog", "latency-bursts-prompt"): NO_QUEUE,
    ("glog", "latency-spaced"): NO_QUEUE,
    ("glog", "latency-spaced-prompt"): NO_QUEUE,
    ("glog", "rotation"): "has no limit to the number of files",
    ("glog", "rendering"): "has no layout apart from its output",
    ("glog", "rendering-process"): "has no layout apart from its output",
    ("glog", "reopen"): NO_REOPENING,
    ("spdlog", "reopen"): NO_REOPENING,
    ("log4cplus", "reopen"): NO_REOPENING,
    ("log4cxx", "reopen"): NO_REOPENING,
    **{(logger, "dropped-formatted"): NO_FORMAT for logger in ["log4cplus", "log4cxx", "glog", "boost"]},
    **{(logger, workload): NO_FORMAT for logger in ["log4cplus", "log4cxx", "boost"]
       for workload in ["burst-formatted", "burst-formatted-own"]},
    **{("glog", workload): NO_QUEUE for workload in IN_BATCHES},
    **{(logger, workload): NO_JSON for logger in ["spdlog", "log4cplus", "glog", "boost"] for workload in JSON_WORKLOADS},
    ("log4cxx", "json-async-batch"): NO_BATCHES,
    ("quill", "json-sync"): "has no appender that works in the calling thread",
    ("quill", "json-async"): "flushes no single line without the caller's waiting for it",
    **{(logger, workload): NO_BATCHES for logger in ["spdlog", "log4cplus", "log4cxx", "boost"] for workload in IN_BATCHES},
    **{("quill", workload): "has no appender that works in the calling thread" for workload in ONLY_A_QUEUE},
    **{("quill", workload): "flushes no single line without the caller's waiting for it" for workload in EVERY_LINE},
    **{(logger, workload): NO_FILE for logger in OTHERS for workload in IN_A_FILE},
    ("quill", "rendering-process"): "has no host name in its layouts",
    ("quill", "reopen"): NO_REOPENING,
}


# Even two runs of one program differ.
NO_SLOWER = 1.05


def targets():
    for row in REJECTED:
        yield Target("rejected call, " + row.label, row.figure, row.limit, 1.5)
        yield Target("rejected call, " + row.label, row.figure, BEST_OTHER, 1.0)
    for row, factor in zip(DROPPED, [0.8, 0.9, 0.9]):
        yield Target("nothing written, " + row.label, row.figure, SPDLOG, factor)
    yield from file_targets()
    yield from asynchronous_targets()
    for row in RENDERING:
        yield Target("rendering, " + row.label, row.figure, BEST_OTHER, 0.5)
    yield Target("file opened for every line", REOPEN, REOPEN, 1.15)


def file_targets():
    yield Target("file, 1 thread", SYNCHRONOUS[0].figure, WRITE, 1.25)
    for row, factor in zip(SYNCHRONOUS, [0.9, 0.75, 0.75]):
        yield Target("file, " + row.label, row.figure, BEST_OTHER, factor)
    for row in SYNCHRONOUS:
        yield Target("file, " + row.label, row.figure, BEFORE, NO_SLOWER)


def asynchronous_targets():
    for row, factor in zip(PRODUCER, [0.6, 0.8, 0.8]):
        yield Target("asynchronous, the call, " + row.label, row.figure, BEST_OTHER, factor)
    for row, factor in zip(END_TO_END, [1.25, 1.25, 1.25]):
        yield Target("asynchronous, end to end, " + row.label, row.figure, WRITE, factor)
        yield Target("asynchronous, end to end, " + row.label, row.figure, BEST_OTHER, 0.75)
    for row in BATCH_END_TO_END:
        yield Target("asynchronous, end to end in batches, " + row.label, row.figure, QUILL, 0.45)
    for row in JSON:
        yield Target("JSON, " + row.label, row.figure, BEST_OTHER, 1.0)
    for row in PEAK_MEMORY:
        yield Target("asynchronous, peak memory, " + row.label, row.figure, SPDLOG, 0.25)
    yield Target("asynchronous, memory, " + SELDOM.label, SELDOM.figure, Value(4, "KB"), 1.0)
    for row, factor in zip(BURST, [1.0, 0.8, 0.8]):
        yield Target("asynchronous, a burst, " + row.label, row.figure, QUILL, factor)
    for row, factor in zip(BURST, [0.7, 0.5]):
        yield Target("asynchronous, a burst, " + row.label, row.figure, SPDLOG, factor)
    for rows in KEPT_CALL, KEPT_SPACED:
        for row in rows[1:]:
            yield Target("the queue, " + row.label, row.figure, Ours(rows[0].figure, rows[0].label), 1.15)
    yield from latency_targets()


def latency_targets():
    by_default, prompt = LATENCY_SPACED[:4], LATENCY_SPACED[4:]
    for row, most in zip(by_default, [300, 3000]):
        yield Target("a call every 100 us, " + row.label, row.figure, Value(most, "ns"), 1.0)
    for row, factor in zip(by_default, [1.2, 1.2, 1.5]):
        yield Target("a call every 100 us, " + row.label, row.figure, QUILL, factor)
    for row in by_default:
        yield Target("a call every 100 us, " + row.label, row.figure, SPDLOG, 1.0)
    yield Target("a call every 100 us, " + prompt[0].label, prompt[0].figure, SPDLOG, 0.3)
    yield Target("a call every 100 us, prompt delivery, the consumer", CONSUMER.figure, Value(10, "% of a core"), 1.0)


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
