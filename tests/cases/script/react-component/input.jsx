import React, { useState } from "react";

const Badge = ({ label }) => <span className="badge">{label}</span>;

export default function Counter({ start = 0, step }) {
  const [count, setCount] = useState(start);
  const items = [1, 2, 3].map((n) => n * step);

  const add = () => {
    setCount(count + 1);
  };

  useEffect(() => {
    document.title = `Count: ${count}`;
  }, [count]);

  return (
    <div className="counter">
      <Badge label={count} />
      {items.map((item) => (
        <li key={item}>{item}</li>
      ))}
      <button onClick={() => add()} disabled={count > 9}>
        Don't add more
      </button>
      {/* hidden note */}
    </div>
  );
}
