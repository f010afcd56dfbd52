"""Loops of edges and what can be said of them, in numbers only: no words, no windows.

``edges`` is the one model that everything else is written for; lengths are SI.
"""
