"""Processors that a worker has made already. Calls on one processor wait for one another, so that each thread takes one
for itself and puts it back; at most as many are made as threads work at the same time."""
from __future__ import annotations

import threading
from collections import OrderedDict
from contextlib import contextmanager
from typing import Iterator, List, NamedTuple, Optional, Tuple

from ._arrays import Image
from ._objects import Processor
from ._recipe import Recipe

MOST_RECIPES = 4  # beyond, those that were not used for the longest time are closed


class _Idle(NamedTuple):
    processors: List[Processor]
    # Of a correction that is made of a frame. Kept, so that no other frame gets its identity: the name that dask has
    # for a frame says nothing about its pixels, which may have been computed anew from a changed file.
    frame: Optional[Image]


class _Pool:
    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._idle: OrderedDict[Tuple[str, int], _Idle] = OrderedDict()
        self.made = 0

    @contextmanager
    def processor(self, recipe: Recipe, frame: Optional[Image] = None) -> Iterator[Processor]:
        token = (recipe.token, id(frame))
        with self._lock:
            idle = self._idle.get(token)
            taken = idle.processors.pop() if idle and idle.processors else None
        if taken is None:
            taken = recipe.processor(frame)
            with self._lock:
                self.made += 1
        try:
            yield taken
        except BaseException:
            taken.close()
            raise
        leaving: List[Processor] = []
        with self._lock:
            self._idle.setdefault(token, _Idle([], frame)).processors.append(taken)
            self._idle.move_to_end(token)
            while len(self._idle) > MOST_RECIPES:
                leaving += self._idle.popitem(last=False)[1].processors
        for processor in leaving:
            processor.close()

    def clear(self) -> None:
        with self._lock:
            idle, self._idle = self._idle, OrderedDict()
        for entry in idle.values():
            for processor in entry.processors:
                processor.close()


pool = _Pool()
