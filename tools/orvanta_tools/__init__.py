"""The commands orvanta-points, -view, -plot and -check, and what they share.

Arrays of coordinates have the shape (n, 3) and the unit of the solution.
"""
