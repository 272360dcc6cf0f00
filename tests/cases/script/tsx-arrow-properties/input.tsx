import * as React from "react";

type Props = { rows: string[]; onPick?: (row: string) => void };

@observer
class Table extends React.Component<Props> {
  state = { open: true };
  private input = React.createRef<HTMLInputElement>();

  handleClick = (row: string): void => {
    this.props.onPick?.(row);
  };

  handleKey = async (e: KeyboardEvent) => {
    if (e.key === "Enter") await this.save();
  };

  render(): JSX.Element {
    const { rows } = this.props;
    return <>{rows.map(r => <Row<string> key={r} value={r} />)}</>;
  }
}

export default Table;
